#include "Views/Terminal/TerminalView.h"

#include "Models/ServerStore.h"
#include "Views/Components/Labels.h"
#include "Views/Components/Panel.h"
#include "Views/Components/Pill.h"
#include "Views/Components/PlainText.h"
#include "Views/Terminal/ClipboardRequestBar.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Terminal/TerminalFindField.h"
#include "Views/Terminal/TerminalHostView.h"
#include "Views/Terminal/TerminalHostWrapper.h"
#include "Views/Terminal/TerminalTabs.h"
#include "Views/Theme/Icons.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

TerminalView::TerminalView(const Theme &theme, const ServerStore &store, GlobalTerminalSessionManager &terminals,
                           const Server &server, QWidget *parent)
    : SectionPage(parent)
    , m_store(store)
    , m_terminals(terminals)
    , m_serverId(server.id)
    , m_title(new ElidedLabel(theme, TextStyle::Heading, TextLabel::Shade::Text, Qt::ElideRight, this))
    , m_state(new Pill(theme, Pill::Dot::With, this))
    , m_connect(new QPushButton(tr("Connect"), this))
    , m_find(new TerminalFindField(theme, this))
    , m_newTerminal(new QPushButton(this))
    , m_clipboardRequest(new ClipboardRequestBar(theme, this))
    , m_tabs(new TerminalTabs(theme, terminals, server.id, this))
    , m_wrapper(new TerminalHostWrapper(theme, store, terminals, server.id, this))
{
    setAccessibleName(tr("Terminal"));
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader(theme));
    column->addWidget(m_clipboardRequest);
    column->addWidget(m_tabs);
    column->addWidget(m_wrapper, 1);
    setFocusProxy(m_wrapper);
    connectParts();
    followRecord();
    followState();
}

QWidget *TerminalView::makeHeader(const Theme &theme)
{
    m_newTerminal->setIcon(Icons::icon(IconName::Add, theme));
    m_newTerminal->setFixedSize(Metrics::kControlHeight, Metrics::kControlHeight);
    m_newTerminal->setAccessibleName(tr("New Terminal"));
    m_newTerminal->setToolTip(tr("New Terminal (Ctrl+Shift+T)"));
    auto *const header = new Panel(theme, &Tokens::surface, Qt::BottomEdge, this);
    auto *const line = new QHBoxLayout(header);
    line->setContentsMargins(16, 8, 16, 8);
    line->setSpacing(12);
    line->addWidget(m_title);
    line->addWidget(m_state);
    line->addWidget(m_connect);
    line->addStretch(1);
    line->addWidget(m_find);
    line->addWidget(m_newTerminal);
    return header;
}

// For this page only: elsewhere the keys are free.
void TerminalView::addShortcut(const QKeySequence &keys, const std::function<void()> &action)
{
    auto *const shortcut = new QShortcut(keys, this);
    shortcut->setContext(Qt::WidgetWithChildrenShortcut);
    connect(shortcut, &QShortcut::activated, this, action);
}

void TerminalView::connectParts()
{
    connect(this, &SectionPage::activeChanged, this, [this](bool isActive) {
        if (isActive) {
            m_tabs->refresh();
            m_wrapper->showTerminal();
            followTerminal();
        }
    });
    addShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_F, [this] { m_find->start(); });
    addShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_T, [this] { openTerminal(); });
    connect(m_find, &TerminalFindField::finished, this, [this] { m_wrapper->setFocus(); });
    connect(m_newTerminal, &QPushButton::clicked, this, &TerminalView::openTerminal);
    connect(m_connect, &QPushButton::clicked, this, [this] {
        m_wrapper->setFocus();
        m_terminals.connectTerminalIfNeeded(m_terminals.currentTerminal(m_serverId));
    });
    connect(m_tabs, &TerminalTabs::terminalChosen, this, &TerminalView::choose);
    connect(m_tabs, &TerminalTabs::closeRequested, this, [this](const QUuid &terminal) {
        m_terminals.closeTerminal(terminal);
        choose(m_terminals.currentTerminal(m_serverId));
    });
    connect(&m_wrapper->host(), &TerminalHostView::terminalSwitched, this, &TerminalView::followTerminal);
    connect(&m_terminals, &GlobalTerminalSessionManager::terminalChanged, this, &TerminalView::followState);
    connect(&m_terminals, &GlobalTerminalSessionManager::terminalsChanged, this, &TerminalView::followState);
    connect(&m_store, &ServerStore::serverUpdated, this, &TerminalView::followRecord);

    using Answer = GlobalTerminalSessionManager::Coordinator::ClipboardAnswer;
    const auto answer = [this](Answer given) {
        if (auto *const coordinator = m_terminals.terminal(m_terminals.currentTerminal(m_serverId)).coordinator) {
            coordinator->answerClipboardRequest(given);
        }
        m_wrapper->setFocus();
    };
    connect(m_clipboardRequest, &ClipboardRequestBar::refused, this, [answer] { answer(Answer::No); });
    connect(m_clipboardRequest, &ClipboardRequestBar::allowedOnce, this, [answer] { answer(Answer::Once); });
    connect(m_clipboardRequest, &ClipboardRequestBar::allowedAlways, this, [answer] { answer(Answer::Always); });
}

void TerminalView::openTerminal()
{
    if (const std::optional<Server> server = m_store.server(m_serverId)) {
        choose(m_terminals.openTerminal(*server));
    }
}

void TerminalView::choose(const QUuid &terminalId)
{
    m_terminals.setCurrentTerminal(m_serverId, terminalId);
    m_tabs->refresh();
    m_wrapper->showTerminal();
    m_terminals.focusTerminal(m_serverId);
}

void TerminalView::followTerminal()
{
    HostedTerminalView *const terminal = m_wrapper->host().terminal();
    m_find->setTerminal(terminal);
    if (terminal != nullptr) {
        connect(terminal, &HostedTerminalView::findRequested, m_find, &TerminalFindField::start,
                Qt::UniqueConnection);
    }
    followState();
}

void TerminalView::followState()
{
    const QUuid current = m_terminals.currentTerminal(m_serverId);
    const auto *const coordinator = m_terminals.terminal(current).coordinator;
    const auto state = coordinator ? coordinator->connectionState() : TerminalConnectionState::disconnected;
    switch (state) {
    case TerminalConnectionState::connected:
        m_state->setState(tr("Connected"), ToneName::Green);
        break;
    case TerminalConnectionState::connecting:
        m_state->setState(tr("Connecting..."), ToneName::Orange);
        break;
    case TerminalConnectionState::disconnected:
        m_state->setState(tr("Disconnected"), ToneName::Gray);
        break;
    }
    const bool hasFailed = coordinator != nullptr && coordinator->hostedSSHManager() != nullptr &&
                           state == TerminalConnectionState::disconnected;
    m_connect->setVisible(hasFailed && !m_terminals.sessionState(current).shouldShowReconnect);
    const std::optional<QString> request = coordinator ? coordinator->clipboardRequest() : std::nullopt;
    if (request) {
        m_clipboardRequest->ask(coordinator->server().name, *request);
    } else {
        m_clipboardRequest->hide();
    }
}

void TerminalView::followRecord()
{
    if (const std::optional<Server> server = m_store.server(m_serverId)) {
        m_title->setFullText(PlainText::oneLine(server->username + u'@' + server->name));
    }
}
