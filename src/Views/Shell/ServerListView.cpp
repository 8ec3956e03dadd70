#include "Views/Shell/ServerListView.h"

#include "Models/ServerStore.h"
#include "Views/Components/Labels.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerRowDelegate.h"

#include <QHBoxLayout>
#include <QListView>
#include <QVBoxLayout>
#include <algorithm>

namespace
{

constexpr int kRestMs = 200;

} // namespace

ServerListView::ServerListView(const Theme &theme, ServerStore &store, QWidget *parent)
    : Panel(theme, &Tokens::side, {}, parent)
    , m_store(store)
    , m_model(new ServerListModel(store, this))
    , m_list(new QListView(this))
    , m_total(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Dim, this))
    , m_connected(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Dim, this))
{
    m_list->setModel(m_model);
    m_list->setItemDelegate(new ServerRowDelegate(theme, m_list));
    m_list->setAccessibleName(tr("Servers"));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setMouseTracking(true);
    m_list->viewport()->setAutoFillBackground(false);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto *footer = new Panel(theme, &Tokens::side, Qt::TopEdge, this);
    auto *counts = new QHBoxLayout(footer);
    counts->setContentsMargins(14, 9, 14, 9);
    counts->addWidget(m_total);
    counts->addStretch();
    counts->addWidget(m_connected);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 8, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_list, 1);
    column->addWidget(footer);

    m_rest.setSingleShot(true);
    m_rest.setInterval(kRestMs);
    connect(&m_rest, &QTimer::timeout, this, &ServerListView::selectCurrent);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, &m_rest, qOverload<>(&QTimer::start));
    connect(m_list, &QListView::clicked, this, &ServerListView::selectCurrent);
    connect(m_list, &QListView::activated, this, &ServerListView::selectCurrent);
    connect(&store, &ServerStore::selectedServerChanged, this, &ServerListView::followSelection);
    connect(&store, &ServerStore::serversAdded, this, &ServerListView::updateCounts);
    connect(&store, &ServerStore::serverUpdated, this, &ServerListView::updateCounts);
    connect(&store, &ServerStore::serverRemoved, this, &ServerListView::updateCounts);
    updateCounts();
}

void ServerListView::selectCurrent()
{
    m_rest.stop();
    const QModelIndex current = m_list->currentIndex();
    if (!current.isValid()) {
        return;
    }
    const QUuid id = current.data(ServerListModel::IdRole).toUuid();
    if (!m_store.selectedServer() || m_store.selectedServer()->id != id) {
        m_store.setSelectedServer(m_store.server(id));
    }
}

void ServerListView::followSelection()
{
    const auto &selected = m_store.selectedServer();
    const QModelIndex index = selected ? m_model->indexOf(selected->id) : QModelIndex();
    if (m_list->currentIndex() != index && !m_rest.isActive()) {
        m_list->setCurrentIndex(index);
        m_rest.stop();
    }
}

void ServerListView::updateCounts()
{
    const QList<Server> &servers = m_store.servers();
    const auto connected = std::ranges::count_if(servers, &Server::isConnected);
    m_total->setText(servers.size() == 1 ? tr("1 server") : tr("%L1 servers").arg(servers.size()));
    m_connected->setText(tr("%L1 connected").arg(connected));
}

QString ServerListView::footer() const
{
    return m_total->text() + u' ' + m_connected->text();
}
