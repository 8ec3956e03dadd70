#include "Views/Terminal/TerminalHostWrapper.h"

#include "Models/ServerStore.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Terminal/TerminalHostView.h"
#include "Views/Terminal/TerminalReconnectOverlay.h"

#include <QKeyEvent>
#include <QPushButton>

TerminalHostWrapper::TerminalHostWrapper(const Theme &theme, const ServerStore &store,
                                         GlobalTerminalSessionManager &terminals, const QUuid &serverId,
                                         QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_terminals(terminals)
    , m_serverId(serverId)
    , m_host(new TerminalHostView(theme, store, terminals, this))
    , m_overlay(new TerminalReconnectOverlay(theme, this))
{
    m_overlay->hide();
    setFocusProxy(m_host);
    connect(m_host, &TerminalHostView::terminalSwitched, this, &TerminalHostWrapper::followSession);
    connect(&terminals, &GlobalTerminalSessionManager::terminalChanged, this, &TerminalHostWrapper::followSession);
    connect(m_overlay, &TerminalReconnectOverlay::reconnectRequested, this, [this] {
        m_reconnecting = m_terminals.currentTerminal(m_serverId);
        if (auto *const coordinator = m_terminals.terminal(m_reconnecting).coordinator) {
            m_host->setFocus();
            coordinator->reconnect();
        }
    });
}

void TerminalHostWrapper::showTerminal()
{
    m_host->switchToServer(m_serverId);
    followSession();
}

void TerminalHostWrapper::followSession()
{
    const QUuid current = m_terminals.currentTerminal(m_serverId);
    const auto [terminal, coordinator] = m_terminals.terminal(current);
    const bool isConnecting =
        coordinator != nullptr && coordinator->connectionState() == TerminalConnectionState::connecting;
    if (!isConnecting) {
        m_reconnecting = {};
    }
    const bool isReconnecting = isConnecting && m_reconnecting == current;
    const bool isOffered =
        terminal != nullptr && (m_terminals.sessionState(current).shouldShowReconnect || isReconnecting);
    m_overlay->setReconnecting(isReconnecting);
    if (isOffered == m_overlay->isVisibleTo(this)) {
        return;
    }
    if (const std::optional<Server> server = m_store.server(m_serverId)) {
        m_overlay->setServerName(server->name);
    }
    if (isOffered) {
        terminal->installEventFilter(this);
    } else if (terminal != nullptr) {
        terminal->removeEventFilter(this);
    }
    m_overlay->setVisible(isOffered);
    placeOverlay();
}

// The keyboard stays where it is when a session ends, or keys meant for the shell would begin another one. With
// nobody behind the terminal Tab leads to the offer.
bool TerminalHostWrapper::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && watched == m_host->terminal() && m_overlay->isVisible()) {
        const int key = static_cast<const QKeyEvent *>(event)->key();
        if (key == Qt::Key_Tab || key == Qt::Key_Backtab) {
            m_overlay->button().setFocus(Qt::TabFocusReason);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TerminalHostWrapper::placeOverlay()
{
    m_overlay->adjustSize();
    const QSize room = size() - m_overlay->size();
    m_overlay->move(std::max(0, room.width() / 2), std::max(0, room.height() / 2));
    m_overlay->raise();
}

void TerminalHostWrapper::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_host->setGeometry(rect());
    placeOverlay();
}
