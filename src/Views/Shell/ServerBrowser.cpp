#include "Views/Shell/ServerBrowser.h"

#include "Models/ServerStore.h"
#include "Views/Components/PlainText.h"
#include "Views/Components/SearchField.h"
#include "Views/Shell/ListMessage.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Shell/ServerRowDelegate.h"
#include "Views/Shell/SidebarList.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kMargin = 12;

} // namespace

ServerBrowser::ServerBrowser(const Theme &theme, ServerStore &store, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_model(new ServerListModel(store, this))
    , m_search(new SearchField(theme, tr("Search servers, labels (key:value)..."), this))
    , m_bar(new QHBoxLayout)
    , m_list(new SidebarList(tr("Servers"), this))
    , m_delegate(new ServerRowDelegate(theme, m_list))
    , m_message(new ListMessage(theme, this))
    , m_pages(new QStackedLayout)
{
    m_search->setToolTip(tr("Search servers, labels (key:value)..."));
    m_search->installEventFilter(this);
    m_list->setModel(m_model);
    m_list->setItemDelegate(m_delegate);
    m_list->viewport()->installEventFilter(this);
    connect(m_list, &QListView::clicked, this, &ServerBrowser::chosen);
    connect(m_list, &QListView::activated, this, &ServerBrowser::chosen);

    m_bar->setContentsMargins(kMargin, kMargin, kMargin, 8);
    m_bar->setSpacing(8);
    m_bar->addWidget(m_search, 1);
    m_pages->addWidget(m_list);
    m_pages->addWidget(m_message);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(m_bar);
    column->addLayout(m_pages, 1);

    connect(m_search, &SearchField::textChanged, m_model, &ServerListModel::setSearchText);
    connect(m_search, &SearchField::textChanged, this, &ServerBrowser::showState);
    connect(&m_message->button(), &QPushButton::clicked, m_search, [this] {
        m_search->clear();
        m_search->setFocus();
    });
    connect(&store, &ServerStore::serversAdded, this, &ServerBrowser::showState);
    connect(&store, &ServerStore::serverUpdated, this, &ServerBrowser::showState);
    connect(&store, &ServerStore::serverRemoved, this, &ServerBrowser::showState);
    showState();
}

void ServerBrowser::addBesideSearch(QWidget *widget)
{
    m_bar->addWidget(widget);
}

bool ServerBrowser::showsRows() const
{
    return m_pages->currentWidget() == m_list;
}

void ServerBrowser::contextMenuEvent(QContextMenuEvent *event)
{
    const QWidget *const viewport = m_list->viewport();
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index =
        isByKey ? m_list->currentIndex() : m_list->indexAt(viewport->mapFromGlobal(event->globalPos()));
    if (index.isValid() && showsRows()) {
        Q_EMIT menuRequested(index.data(ServerListModel::IdRole).toUuid(),
                             isByKey ? viewport->mapToGlobal(m_list->visualRect(index).center())
                                     : event->globalPos());
    }
    event->accept();
}

bool ServerBrowser::eventFilter(QObject *watched, QEvent *event)
{
    // A row whose menu is asked for is not selected by that: it would be connected to.
    const bool isPress = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    if (watched == m_list->viewport() && isPress) {
        return static_cast<QMouseEvent *>(event)->button() == Qt::RightButton;
    }
    if (watched == m_search && event->type() == QEvent::KeyPress) {
        const auto *press = static_cast<QKeyEvent *>(event);
        const int key = press->key();
        const bool isPlain = !(press->modifiers() & ~Qt::KeypadModifier);
        if (isPlain && (key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter)) {
            takeFirst(key);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ServerBrowser::takeFirst(int key)
{
    if (m_model->rowCount() == 0) {
        return;
    }
    if (!m_list->currentIndex().isValid()) {
        m_list->setCurrentIndex(m_model->index(0));
    }
    m_list->setFocus(Qt::OtherFocusReason);
    if (key != Qt::Key_Down) {
        Q_EMIT chosen();
    }
}

void ServerBrowser::showState()
{
    if (m_model->rowCount() > 0) {
        m_pages->setCurrentWidget(m_list);
        return;
    }
    if (m_store.servers().isEmpty()) {
        m_message->setMessage(tr("No Servers"), {}, {});
    } else {
        m_message->setMessage(tr("No Results"), tr("No servers match '%1'").arg(PlainText::excerpt(m_search->text())),
                              tr("Clear Search"));
    }
    m_pages->setCurrentWidget(m_message);
}
