#pragma once

#include "Models/Server.h"
#include "Views/Components/SectionPage.h"

#include <QKeySequence>
#include <functional>

class ClipboardRequestBar;
class ElidedLabel;
class GlobalTerminalSessionManager;
class Pill;
class QPushButton;
class ServerStore;
class TerminalFindField;
class TerminalHostWrapper;
class TerminalTabs;
class Theme;

/// The terminal section of one server. Until it comes on show for the first time its server has no terminal; from
/// then on the terminal stays, whatever becomes of this page.
class TerminalView : public SectionPage
{
    Q_OBJECT

public:
    /// All of it outlives the page.
    TerminalView(const Theme &theme, const ServerStore &store, GlobalTerminalSessionManager &terminals,
                 const Server &server, QWidget *parent = nullptr);

    TerminalHostWrapper &wrapper() const { return *m_wrapper; }

    TerminalFindField &find() const { return *m_find; }

    TerminalTabs &tabs() const { return *m_tabs; }

    Pill &connectionPill() const { return *m_state; }

    /// Offered while there is no session and none was closed: its client could not be started.
    QPushButton &connectButton() const { return *m_connect; }

    ClipboardRequestBar &clipboardRequest() const { return *m_clipboardRequest; }

public Q_SLOTS:
    /// One more terminal of this server, on show at once.
    void openTerminal();

private:
    QWidget *makeHeader(const Theme &theme);
    void addShortcut(const QKeySequence &keys, const std::function<void()> &action);
    void connectParts();
    void choose(const QUuid &terminalId);
    void followTerminal();
    void followState();
    void followRecord();

    const ServerStore &m_store;
    GlobalTerminalSessionManager &m_terminals;
    QUuid m_serverId;
    ElidedLabel *m_title;
    Pill *m_state;
    QPushButton *m_connect;
    TerminalFindField *m_find;
    QPushButton *m_newTerminal;
    ClipboardRequestBar *m_clipboardRequest;
    TerminalTabs *m_tabs;
    TerminalHostWrapper *m_wrapper;
};
