#include "Views/Shell/ServerListView.h"

#include "Models/ServerStore.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/Labels.h"
#include "Views/Components/PlainText.h"
#include "Views/Components/SearchField.h"
#include "Views/Shell/AddEditServerView.h"
#include "Views/Shell/ServerBrowser.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerRowDelegate.h"
#include "Views/Theme/Icons.h"

#include <QAction>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QToolTip>
#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kRestMs = 200;

} // namespace

ServerListView::ServerListView(const Theme &theme, const AddEditServerViewModel::Services &services, QWidget *parent)
    : Panel(theme, &Tokens::side, {}, parent)
    , m_theme(theme)
    , m_services(services)
    , m_store(services.store)
    , m_browser(new ServerBrowser(theme, services.store, this))
    , m_model(&m_browser->model())
    , m_list(&m_browser->list())
    , m_add(new QPushButton(Icons::icon(IconName::Add, theme), {}, this))
    , m_total(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Dim, this))
    , m_connected(new TextLabel(theme, TextStyle::Small, {}, TextLabel::Shade::Dim, this))
{
    m_add->setToolTip(tr("Add server"));
    m_add->setAccessibleName(tr("Add server"));
    connect(m_add, &QPushButton::clicked, this, &ServerListView::addServer);
    m_browser->addBesideSearch(m_add);

    m_list->installEventFilter(this);
    setFocusProxy(m_list);

    layOut(theme);
    connectList();
    connect(&searchField(), &SearchField::textChanged, this, &ServerListView::showState);
    ServerStore &store = services.store;
    connect(&store, &ServerStore::selectedServerChanged, this, &ServerListView::followSelection);
    connect(&store, &ServerStore::serversAdded, this, &ServerListView::storeChanged);
    connect(&store, &ServerStore::serverUpdated, this, &ServerListView::storeChanged);
    connect(&store, &ServerStore::serverRemoved, this, &ServerListView::storeChanged);
    connect(&store, &ServerStore::importErrorChanged, this, &ServerListView::importErrorChanged);
    storeChanged();
}

void ServerListView::layOut(const Theme &theme)
{
    auto *footer = new Panel(theme, &Tokens::side, Qt::TopEdge, this);
    auto *counts = new QHBoxLayout(footer);
    counts->setContentsMargins(14, 9, 14, 9);
    counts->addWidget(m_total);
    counts->addStretch();
    counts->addWidget(m_connected);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_browser, 1);
    column->addWidget(footer);
}

void ServerListView::connectList()
{
    m_rest.setSingleShot(true);
    m_rest.setInterval(kRestMs);
    connect(&m_rest, &QTimer::timeout, this, [this] {
        // A list that gets the keyboard makes its first row the current one, without selecting it.
        if (m_list->selectionModel()->isSelected(m_list->currentIndex())) {
            selectCurrent();
        }
    });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, &m_rest, qOverload<>(&QTimer::start));
    connect(m_browser, &ServerBrowser::chosen, this, &ServerListView::selectCurrent);
    connect(m_browser, &ServerBrowser::menuRequested, this, &ServerListView::openMenu);
    // Where the current row goes, the list makes a neighbour the current one. Nobody has chosen that.
    connect(m_model, &ServerListModel::rowsRemoved, this, &ServerListView::dropPendingSelection);
    connect(m_model, &ServerListModel::modelReset, this, &ServerListView::dropPendingSelection);
}

SearchField &ServerListView::searchField() const
{
    return m_browser->searchField();
}

void ServerListView::focusSearch()
{
    searchField().setFocus(Qt::ShortcutFocusReason);
    searchField().selectAll();
}

bool ServerListView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const auto *press = static_cast<QKeyEvent *>(event);
        return !(press->modifiers() & ~Qt::KeypadModifier) && listKey(press->key());
    }
    return Panel::eventFilter(watched, event);
}

bool ServerListView::listKey(int key)
{
    const QModelIndex current = m_list->currentIndex();
    if ((key != Qt::Key_Delete && key != Qt::Key_F2) || !current.isValid()) {
        return false;
    }
    const QUuid id = current.data(ServerListModel::IdRole).toUuid();
    const auto server = m_store.server(id);
    const bool deletes = key == Qt::Key_Delete;
    if (server && server->isConnected) {
        refuse(current, deletes ? tr("Cannot delete connected server") : tr("Cannot edit connected server"));
    } else if (deletes) {
        askToDelete(id);
    } else {
        editServer(id);
    }
    return true;
}

void ServerListView::refuse(const QModelIndex &index, const QString &reason)
{
    QToolTip::showText(m_list->viewport()->mapToGlobal(m_list->visualRect(index).bottomLeft()), reason, m_list);
}

void ServerListView::addServer()
{
    openEditor(std::nullopt);
}

void ServerListView::editServer(const QUuid &id)
{
    const auto server = m_store.server(id);
    if (server && !server->isConnected) {
        openEditor(server);
    }
}

void ServerListView::openEditor(const std::optional<Server> &server)
{
    if (!m_editor || !m_editor->isVisible()) {
        m_editor = new AddEditServerView(m_theme, m_services, server, window());
        m_editor->open();
    }
}

AddEditServerView *ServerListView::editor() const
{
    return m_editor;
}

void ServerListView::openMenu(const QUuid &id, const QPoint &place)
{
    const auto server = m_store.server(id);
    if (!server) {
        return;
    }
    m_menu = new QMenu(this);
    m_menu->setAttribute(Qt::WA_DeleteOnClose);
    m_menu->setToolTipsVisible(true);
    QAction *edit = m_menu->addAction(Icons::icon(IconName::Edit, m_theme), tr("Edit server"), this,
                                      [this, id] { editServer(id); });
    edit->setEnabled(!server->isConnected);
    edit->setToolTip(server->isConnected ? tr("Cannot edit connected server") : QString());
    QAction *remove = m_menu->addAction(Icons::icon(IconName::Delete, m_theme), tr("Delete server"), this,
                                        [this, id] { askToDelete(id); });
    remove->setEnabled(!server->isConnected);
    remove->setToolTip(server->isConnected ? tr("Cannot delete connected server") : QString());
    mark(m_model->indexOf(id));
    connect(m_menu, &QMenu::aboutToHide, this, [this] { mark({}); });
    m_menu->popup(place);
}

void ServerListView::mark(const QModelIndex &index)
{
    m_browser->delegate().setMarked(index);
    m_list->viewport()->update();
}

void ServerListView::askToDelete(const QUuid &id)
{
    const auto server = m_store.server(id);
    if (!server || server->isConnected || (m_question && m_question->isVisible())) {
        return;
    }
    AlertDialog::Content content;
    content.title = tr("Delete Server");
    content.text =
        tr("Are you sure you want to delete server '%1'from the list?").arg(PlainText::excerpt(server->name));
    content.buttons = {{tr("Cancel")}, {tr("Delete"), ButtonKind::Danger}};
    m_question = new AlertDialog(m_theme, content, window());
    connect(m_question, &AlertDialog::answered, this, [this, id](qsizetype button) {
        const auto doomed = m_store.server(id);
        if (button == 1 && doomed && !doomed->isConnected) {
            m_store.deleteServer(*doomed);
        }
    });
    m_question->open();
}

void ServerListView::importErrorChanged()
{
    if (!m_store.showImportError()) {
        return;
    }
    const QString error = m_store.importError().value_or(QString());
    if (m_importError && m_importError->isVisible()) {
        m_furtherImportErrors.append(error);
    } else {
        showImportError(error);
    }
}

void ServerListView::showImportError(const QString &error)
{
    AlertDialog::Content content;
    content.title = tr("Import Error");
    content.text = error.isEmpty() ? tr("An error occurred while importing SSH config") : error;
    content.buttons = {{tr("OK")}};
    m_importError = new AlertDialog(m_theme, content, window());
    connect(m_importError, &AlertDialog::answered, this, [this] {
        if (m_furtherImportErrors.isEmpty()) {
            m_store.setShowImportError(false);
        } else {
            showImportError(m_furtherImportErrors.takeFirst());
        }
    });
    m_importError->open();
}

void ServerListView::selectCurrent()
{
    m_rest.stop();
    const QModelIndex current = m_list->currentIndex();
    if (!current.isValid()) {
        return;
    }
    m_list->selectionModel()->select(current, QItemSelectionModel::ClearAndSelect);
    const QUuid id = current.data(ServerListModel::IdRole).toUuid();
    if (!m_store.selectedServer() || m_store.selectedServer()->id != id) {
        m_store.setSelectedServer(m_store.server(id));
    }
}

// Another server was selected, here or elsewhere; or only its record changed, which ends no walk down the list.
void ServerListView::followSelection()
{
    const QUuid id = m_store.selectedServer() ? m_store.selectedServer()->id : QUuid();
    const bool isAnother = std::exchange(m_followed, id) != id;
    if (isAnother || !m_rest.isActive()) {
        showSelection();
    }
}

void ServerListView::showSelection()
{
    const QModelIndex index = m_model->indexOf(m_followed);
    QItemSelectionModel &selection = *m_list->selectionModel();
    if (!index.isValid()) {
        selection.clear();
    } else if (m_list->currentIndex() != index || !selection.isSelected(index)) {
        selection.setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    }
    m_rest.stop();
}

void ServerListView::dropPendingSelection()
{
    m_rest.stop();
    followSelection();
}

void ServerListView::showState()
{
    const QList<Server> &servers = m_store.servers();
    const bool isFiltered = !searchField().text().isEmpty();
    m_total->setText(isFiltered            ? tr("%L1 of %L2 servers").arg(m_model->rowCount()).arg(servers.size())
                     : servers.size() == 1 ? tr("1 server")
                                           : tr("%L1 servers").arg(servers.size()));
}

void ServerListView::storeChanged()
{
    const auto connected = std::ranges::count_if(m_store.servers(), &Server::isConnected);
    m_connected->setText(tr("%L1 connected").arg(connected));
    showState();
}

QString ServerListView::footer() const
{
    return m_total->text() + u' ' + m_connected->text();
}

QMenu *ServerListView::menu() const
{
    return m_menu;
}
