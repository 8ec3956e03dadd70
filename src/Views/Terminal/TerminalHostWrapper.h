#pragma once

#include "Models/Server.h"

#include <QWidget>

class GlobalTerminalSessionManager;
class ServerStore;
class TerminalHostView;
class TerminalReconnectOverlay;
class Theme;

/// The container of terminals as a section shows it: bound to one server, with the offer to reconnect above it.
class TerminalHostWrapper : public QWidget
{
    Q_OBJECT

public:
    /// All of it outlives the widget.
    TerminalHostWrapper(const Theme &theme, const ServerStore &store, GlobalTerminalSessionManager &terminals,
                        const QUuid &serverId, QWidget *parent = nullptr);

    TerminalHostView &host() const { return *m_host; }

    TerminalReconnectOverlay &overlay() const { return *m_overlay; }

    /// Shows the server's current terminal. Before the first call there is none.
    void showTerminal();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void followSession();
    void placeOverlay();

    const ServerStore &m_store;
    GlobalTerminalSessionManager &m_terminals;
    QUuid m_serverId;
    TerminalHostView *m_host;
    TerminalReconnectOverlay *m_overlay;
    QUuid m_reconnecting; // the terminal whose new session was asked for here
};
