#pragma once

#include "TerminalEmulator/View/TerminalWidget.h"
#include "Views/Terminal/HostedTerminalCoordinator.h"

/// The emulator's widget together with the session behind it. It lives on while no container holds it, and takes the
/// session's output all the same.
class HostedTerminalView : public vt::TerminalWidget
{
    Q_OBJECT

public:
    using Coordinator = HostedTerminalCoordinator;

    HostedTerminalView(const Server &server, const Coordinator::Services &services);
    ~HostedTerminalView() override;

    Coordinator &coordinator() { return m_coordinator; }

Q_SIGNALS:
    /// It came on show, in a container.
    void shown();

protected:
    void showEvent(QShowEvent *event) override;

private:
    Coordinator m_coordinator;
};
