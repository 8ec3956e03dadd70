#include "Views/Terminal/HostedTerminalView.h"

namespace
{

constexpr int kScrollback = 10'000; // rows

} // namespace

HostedTerminalView::HostedTerminalView(const Server &server, const Coordinator::Services &services)
    : m_coordinator(*this, server, services)
{
    setScrollbackLimit(kScrollback);
    setDelegate(&m_coordinator);
    m_coordinator.applySettings();
}

HostedTerminalView::~HostedTerminalView()
{
    setDelegate(nullptr);
}

void HostedTerminalView::showEvent(QShowEvent *event)
{
    vt::TerminalWidget::showEvent(event);
    Q_EMIT shown();
}
