#include "Views/Terminal/TerminalHostView.h"

#include "Helpers/Log.h"
#include "Models/ServerStore.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Terminal/TerminalLook.h"

#include <QPainter>
#include <QTimer>

using namespace Qt::StringLiterals;

TerminalHostView::TerminalHostView(const Theme &theme, const ServerStore &store,
                                   GlobalTerminalSessionManager &terminals, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_store(store)
    , m_terminals(terminals)
{
}

TerminalHostView::~TerminalHostView()
{
    detach();
}

HostedTerminalView *TerminalHostView::terminal() const
{
    return m_terminal;
}

void TerminalHostView::switchToServer(const QUuid &serverId)
{
    update(); // the ground is in the terminal's colour
    const QUuid current = m_terminals.currentTerminal(serverId);
    if (m_terminal && m_terminal != m_terminals.terminal(current).terminal) {
        detach();
    }
    m_serverId = serverId;
    if (width() <= 0 || height() <= 0) {
        return; // the next layout comes back here
    }
    const std::optional<Server> server = m_store.server(serverId);
    if (!server) {
        Log::debug(u"Server not found, likely deleted"_s, Log::Category::Terminal);
        return;
    }
    HostedTerminalView *const first = m_terminals.getOrCreateTerminal(*server).terminal;
    HostedTerminalView *const wanted = m_terminals.terminal(current).terminal;
    attach(wanted ? wanted : first);
}

void TerminalHostView::attach(HostedTerminalView *terminal)
{
    if (m_terminal == terminal && terminal->parentWidget() == this) {
        return;
    }
    m_terminal = terminal;
    terminal->setParent(this);
    terminal->setGeometry(rect());
    terminal->lower(); // what the container itself shows stands above it
    terminal->show();
    setFocusProxy(terminal);
    QTimer::singleShot(0, terminal, [this, terminal] {
        terminal->redisplay();
        if (terminal->isVisible() && terminal->parentWidget() == this) {
            terminal->setFocus();
        }
    });
    Q_EMIT terminalSwitched();
}

void TerminalHostView::detach()
{
    if (m_terminal && m_terminal->parentWidget() == this) {
        setFocusProxy(nullptr);
        m_terminal->hide();
        m_terminal->setParent(nullptr);
    }
    m_terminal.clear();
}

void TerminalHostView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_terminal) {
        m_terminal->setGeometry(rect());
    } else if (!m_serverId.isNull()) {
        switchToServer(m_serverId);
    }
}

void TerminalHostView::paintEvent(QPaintEvent *)
{
    const TerminalColorScheme scheme = m_terminals.terminalColorScheme(m_terminals.currentTerminal(m_serverId));
    QPainter(this).fillRect(rect(), TerminalLook::colors(scheme, m_theme).background);
}
