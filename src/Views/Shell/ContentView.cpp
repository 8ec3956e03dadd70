#include "Views/Shell/ContentView.h"

#include "Models/ServerStore.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/FirstPaint.h"
#include "Views/Components/NoticeBar.h"
#include "Views/Components/Panel.h"
#include "Views/Components/SectionNavigation.h"
#include "Views/Components/SectionPage.h"
#include "Views/Components/StatePage.h"
#include "Views/Dashboard/DashboardView.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Shell/AddEditServerView.h"
#include "Views/Shell/CompactHeader.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/Curtain.h"
#include "Views/Shell/MainMenu.h"
#include "Views/Shell/NavigationSidebarView.h"
#include "Views/Shell/SectionPages.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"
#include "Views/Shell/ServerMenuButton.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Theme/Theme.h"

#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace
{

constexpr int kServerListWidth = 236;
constexpr int kLeastServerListWidth = 180;
constexpr int kSectionListWidth = 171;
constexpr int kLeastSectionListWidth = 130;
constexpr int kGreatestListWidth = 600;
constexpr int kRailWidth = 44;

} // namespace

ContentView::ContentView(const Theme &theme, const Services &services, QWidget *parent)
    : QMainWindow(parent)
    , m_theme(theme)
    , m_services(services)
    , m_model(new ContentViewModel(services.store, services.manager, services.clock, services.terminals, this))
    , m_menu(new MainMenu(*this, services.store, *m_model))
    , m_notices(new NoticeBar(theme))
    , m_serverList(new ServerListView(theme, {services.store, services.manager}))
    , m_navigationSidebar(new NavigationSidebarView(theme, *m_model))
    , m_compactHeader(new CompactHeader(theme, services.store, *m_model))
    , m_pages(new SectionPages([this](MainTab tab, const Server &server, QWidget *pages) {
        return Sections::makePage(tab, m_theme, m_services, server, pages);
    }))
    , m_page(new StatePage(theme, m_pages))
    , m_header(new Curtain(m_compactHeader, Qt::Vertical))
    , m_sidebarRail(makeSidebarRail())
{
    m_services.navigation = new SectionNavigation(this);
    auto *central = new QWidget(this);
    auto *column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_header);
    column->addWidget(m_notices);
    column->addWidget(makeBody(), 1);
    setCentralWidget(central);
    resize(kDefaultSize);
    setWindowTitle(QCoreApplication::applicationName());

    connectModel();
    m_model->setWidth(width());
    arrange(false);
    showPlace();
    m_serverList->setFocus();
    // What stands beside the lists while no server is chosen comes with the second picture: the first is there
    // earlier.
    new FirstPaint(*this, [this] {
        m_isPainted = true;
        showWithoutServer();
    });
}

ContentView::~ContentView() = default;

QWidget *ContentView::makeBody()
{
    m_serverList->setMinimumWidth(kLeastServerListWidth);
    m_navigationSidebar->setMinimumWidth(kLeastSectionListWidth);
    m_lists = new QSplitter(Qt::Horizontal);
    m_lists->addWidget(m_serverList);
    m_lists->addWidget(m_navigationSidebar);
    m_lists->setStretchFactor(0, 1);
    m_lists->setChildrenCollapsible(false);
    m_sidebar = new Curtain(m_lists, Qt::Horizontal);

    m_splitter = new QSplitter(Qt::Horizontal);
    m_splitter->addWidget(m_sidebar);
    m_splitter->addWidget(m_page);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setChildrenCollapsible(false);
    setSidebarWidths({kServerListWidth, kSectionListWidth});
    for (const QSplitter *splitter : {m_lists, m_splitter}) {
        connect(splitter, &QSplitter::splitterMoved, this, [this] { m_sidebarWidths = m_lists->sizes(); });
    }

    auto *body = new QWidget;
    auto *line = new QHBoxLayout(body);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(0);
    line->addWidget(m_sidebarRail);
    line->addWidget(m_splitter, 1);
    return body;
}

QWidget *ContentView::makeSidebarRail()
{
    auto *rail = new Panel(m_theme, &Tokens::side, Qt::RightEdge);
    rail->setFixedWidth(kRailWidth);
    auto *button = new QPushButton(rail);
    button->setIcon(Icons::icon(IconName::Sidebar, m_theme));
    button->setFixedSize(28, 26);
    button->setAccessibleName(tr("Show Sidebar"));
    button->setToolTip(tr("Show Sidebar"));
    connect(button, &QPushButton::clicked, m_model, [this] { m_model->setSidebarVisible(true); });
    auto *column = new QVBoxLayout(rail);
    column->setContentsMargins(0, 12, 0, 12);
    column->addWidget(button, 0, Qt::AlignHCenter);
    column->addStretch();
    return rail;
}

void ContentView::connectModel()
{
    connect(m_pages, &SectionPages::pageMade, this, &ContentView::pageMade);
    connect(m_services.navigation, &SectionNavigation::tabRequested, m_model, &ContentViewModel::setSelectedTab);
    connect(m_model, &ContentViewModel::placeChanged, this, &ContentView::showPlace);
    connect(m_model, &ContentViewModel::isConnectingChanged, this, [this](const QUuid &server) {
        m_serverList->model().setConnecting(server, m_model->isConnecting(server));
    });
    connect(m_model, &ContentViewModel::placeChanged, m_serverList, &ServerListView::dropPendingSelection);
    connect(&m_compactHeader->servers(), &ServerMenuButton::menuRequested, m_serverList, &ServerListView::openMenu);
    connect(m_page, &StatePage::retryRequested, m_model, [this] { m_model->setShowingAddServer(true); });
    connect(m_model, &ContentViewModel::isCompactModeChanged, this, [this] { arrange(true); });
    connect(m_model, &ContentViewModel::isSidebarVisibleChanged, this, [this] { arrange(true); });
    connect(m_model, &ContentViewModel::showingDisconnectAlertChanged, this, &ContentView::followDisconnectAlert);
    connect(m_model, &ContentViewModel::showingAddServerChanged, this, &ContentView::followAddServer);
    if (m_services.terminals) {
        connect(m_model, &ContentViewModel::terminalFocusRequested, m_services.terminals,
                &GlobalTerminalSessionManager::focusTerminal);
        connect(m_services.terminals, &GlobalTerminalSessionManager::newsChanged, this,
                &ContentView::followTerminalNews);
        connect(m_model, &ContentViewModel::placeChanged, this, &ContentView::followTerminalNews);
    }
    connect(m_model, &ContentViewModel::searchFocusTriggerChanged, this, &ContentView::focusSearch);
    connect(&m_services.store, &ServerStore::serversAdded, this, &ContentView::showWithoutServer);
    connect(&m_services.store, &ServerStore::serverRemoved, this, &ContentView::showWithoutServer);
}

void ContentView::followTerminalNews()
{
    const auto &server = m_services.store.selectedServer();
    const TerminalNews news = server ? m_services.terminals->news(server->id) : TerminalNews::None;
    const SectionMark heard = news == TerminalNews::Bell ? SectionMark::Attention : SectionMark::News;
    m_model->setMark(MainTab::Terminal, news == TerminalNews::None ? SectionMark::None : heard);
}

DashboardView *ContentView::dashboard() const
{
    const SectionPage *const page = m_pages->page(MainTab::Dashboard);
    return page ? page->findChild<DashboardView *>() : nullptr;
}

DashboardViewModel *ContentView::dashboardModel() const
{
    const SectionPage *const page = m_pages->page(MainTab::Dashboard);
    return page ? page->findChild<DashboardViewModel *>() : nullptr;
}

AlertDialog *ContentView::disconnectAlert() const
{
    return m_disconnectAlert;
}

void ContentView::addNotice(const QString &notice)
{
    m_notices->add(notice);
}

QList<int> ContentView::sidebarWidths() const
{
    return m_sidebarWidths;
}

void ContentView::setSidebarWidths(const QList<int> &widths)
{
    m_sidebarWidths = {std::clamp(widths.value(0), kLeastServerListWidth, kGreatestListWidth),
                       std::clamp(widths.value(1), kLeastSectionListWidth, kGreatestListWidth)};
    const int lists = m_sidebarWidths.at(0) + m_lists->handleWidth() + m_sidebarWidths.at(1);
    m_lists->setSizes(m_sidebarWidths);
    m_splitter->setSizes({lists, std::max(width(), kDefaultSize.width()) - lists});
}

void ContentView::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    m_model->setWidth(width());
}

void ContentView::arrange(bool isAnimated)
{
    const bool isCompact = m_model->isCompactMode();
    m_header->setOpen(isCompact, isAnimated);
    m_sidebar->setOpen(!isCompact && m_model->isSidebarVisible(), isAnimated);
    m_sidebarRail->setVisible(!isCompact && !m_model->isSidebarVisible());
    showWithoutServer();
}

void ContentView::showPlace()
{
    const auto &selected = m_services.store.selectedServer();
    m_pages->showPage(selected, m_model->selectedTab());
    if (selected) {
        m_page->showContent();
    } else {
        showWithoutServer();
    }
}

void ContentView::showWithoutServer()
{
    if (!m_isPainted || m_services.store.selectedServer()) {
        return;
    }
    m_page->showEmpty({tr("No Server Selected"),
                       m_model->isCompactMode() ? tr("Select a server from the dropdown to start managing it")
                                                : tr("Select a server from the left panel to start managing it"),
                       {}},
                      m_services.store.servers().isEmpty() ? tr("Add Server...") : QString());
}

// The dashboard connects when it comes up.
void ContentView::pageMade(MainTab tab, SectionPage *page)
{
    auto *const dashboard = tab == MainTab::Dashboard ? page->findChild<DashboardViewModel *>() : nullptr;
    if (dashboard) {
        connect(dashboard, &DashboardViewModel::disconnectRequested, m_model, &ContentViewModel::disconnectServer,
                Qt::QueuedConnection); // it takes the dashboard with it
        dashboard->start();
    }
}

void ContentView::followDisconnectAlert(bool isShowing)
{
    if (!isShowing) {
        delete m_disconnectAlert;
        return;
    }
    m_disconnectAlert = new AlertDialog(m_theme,
                                        {.title = tr("Disconnect from Server"),
                                         .text = m_model->disconnectQuestion(),
                                         .buttons = {{tr("Cancel")}, {tr("Disconnect"), ButtonKind::Danger}}},
                                        this);
    connect(m_disconnectAlert, &AlertDialog::answered, this, [this](qsizetype button) {
        m_disconnectAlert.clear(); // deletes itself
        m_model->setShowingDisconnectAlert(false);
        if (button == 1) {
            m_model->disconnectServer();
        }
    });
    m_disconnectAlert->open();
}

void ContentView::followAddServer(bool isShowing)
{
    if (!isShowing) {
        return;
    }
    m_serverList->addServer();
    if (const AddEditServerView *const editor = m_serverList->editor()) {
        connect(editor, &QObject::destroyed, m_model, [this] { m_model->setShowingAddServer(false); });
    } else {
        m_model->setShowingAddServer(false);
    }
}

// The list comes back where it was put away; the header has a list of its own in its place.
void ContentView::focusSearch()
{
    if (m_model->isCompactMode()) {
        m_compactHeader->servers().openList();
        return;
    }
    m_model->setSidebarVisible(true);
    m_serverList->focusSearch();
}
