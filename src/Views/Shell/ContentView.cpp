#include "Views/Shell/ContentView.h"

#include "Models/ServerStore.h"
#include "Views/Components/NoticeBar.h"
#include "Views/Components/StatePage.h"
#include "Views/Dashboard/DashboardView.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerListView.h"

#include <QSplitter>
#include <QVBoxLayout>

namespace
{

constexpr QSize kDefaultSize(1200, 800);
constexpr int kServerListWidth = 236;
constexpr int kLeastServerListWidth = 180;

} // namespace

ContentView::ContentView(const Theme &theme, const Services &services, QWidget *parent)
    : QMainWindow(parent)
    , m_theme(theme)
    , m_services(services)
    , m_notices(new NoticeBar(theme))
    , m_serverList(new ServerListView(theme, {services.store, services.manager}))
    , m_splitter(new QSplitter(Qt::Horizontal))
    , m_sections(new QWidget)
{
    m_page = new StatePage(theme, m_sections);
    auto *sections = new QVBoxLayout(m_sections);
    sections->setContentsMargins(0, 0, 0, 0);

    m_serverList->setMinimumWidth(kLeastServerListWidth);
    m_splitter->addWidget(m_serverList);
    m_splitter->addWidget(m_page);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setSizes({kServerListWidth, kDefaultSize.width() - kServerListWidth});

    auto *central = new QWidget(this);
    auto *column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_notices);
    column->addWidget(m_splitter, 1);
    setCentralWidget(central);
    resize(kDefaultSize);
    setWindowTitle(QCoreApplication::applicationName());

    connect(&services.store, &ServerStore::selectedServerChanged, this, &ContentView::followSelection);
    connect(&services.store, &ServerStore::serversAdded, this, &ContentView::followSelection);
    connect(&services.store, &ServerStore::serverRemoved, this, &ContentView::followSelection);
    showWithoutServer();
    m_serverList->setFocus();
}

ContentView::~ContentView() = default;

DashboardView *ContentView::dashboard() const
{
    return m_dashboard;
}

DashboardViewModel *ContentView::dashboardModel() const
{
    return m_dashboardModel;
}

void ContentView::addNotice(const QString &notice)
{
    m_notices->add(notice);
}

void ContentView::followSelection()
{
    const auto &selected = m_services.store.selectedServer();
    if (selected && m_dashboardModel && m_dashboardModel->server().id == selected->id) {
        return;
    }
    // A section is made anew for each server, and whatever is on its way to the old one is dropped with it.
    delete m_dashboard;
    delete m_dashboardModel;
    m_serverList->model().setConnecting({});
    if (!selected) {
        showWithoutServer();
        return;
    }
    m_dashboardModel = new DashboardViewModel(
        DashboardViewModel::Services{m_services.manager, m_services.store, m_services.clock}, *selected, this);
    m_dashboard = new DashboardView(m_theme, *m_dashboardModel, m_sections);
    m_sections->layout()->addWidget(m_dashboard);
    m_page->showContent();
    connect(m_dashboardModel, &DashboardViewModel::disconnectRequested, m_dashboardModel,
            &DashboardViewModel::disconnectFromServer);
    m_dashboard->setActive(true);
    connect(m_dashboardModel, &DashboardViewModel::changed, this, [this] {
        const bool isConnecting = m_dashboardModel->connection() == DashboardViewModel::Connection::Connecting;
        m_serverList->model().setConnecting(isConnecting ? m_dashboardModel->server().id : QUuid());
    });
    m_dashboardModel->start();
}

void ContentView::showWithoutServer()
{
    if (m_services.store.servers().isEmpty()) {
        m_page->showEmpty({tr("No servers yet"), tr("The servers that you look after appear here."), {}});
    } else {
        m_page->showEmpty(
            {tr("No Server Selected"), tr("Select a server from the left panel to start managing it"), {}});
    }
}
