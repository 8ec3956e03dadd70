#pragma once

#include "Models/Server.h"

#include <QPointer>
#include <QWidget>

class GlobalTerminalSessionManager;
class HostedTerminalView;
class ServerStore;
class Theme;

/// The container in which one terminal is on show. It owns none: what leaves it is only detached, and its session,
/// its screen and its scrollback go on.
class TerminalHostView : public QWidget
{
    Q_OBJECT

public:
    /// All of it outlives the view.
    TerminalHostView(const Theme &theme, const ServerStore &store, GlobalTerminalSessionManager &terminals,
                     QWidget *parent = nullptr);
    ~TerminalHostView() override;

    /// Shows the current terminal of this server, which is made if the server has none. Nothing happens for a server
    /// that is no more; without a size it waits for one.
    void switchToServer(const QUuid &serverId);

    /// On show at the moment; may be null.
    HostedTerminalView *terminal() const;

Q_SIGNALS:
    /// Another terminal is on show, or none.
    void terminalSwitched();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void detach();
    void attach(HostedTerminalView *terminal);

    const Theme &m_theme;
    const ServerStore &m_store;
    GlobalTerminalSessionManager &m_terminals;
    QUuid m_serverId;
    QPointer<HostedTerminalView> m_terminal;
};
