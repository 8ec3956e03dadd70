#include "Views/Shell/ServerPopup.h"

#include "Models/ServerStore.h"
#include "Views/Components/SearchField.h"
#include "Views/Shell/ServerBrowser.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Tokens.h"

#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace
{

constexpr int kWidth = 300;
constexpr int kGap = 4; // below the anchor
constexpr int kLeastListHeight = 120;
constexpr int kGreatestListHeight = 420;

} // namespace

ServerPopup::ServerPopup(const Theme &theme, ServerStore &store, QWidget *parent)
    : Panel(theme, &Tokens::side, Qt::TopEdge | Qt::BottomEdge | Qt::LeftEdge | Qt::RightEdge, parent)
    , m_store(store)
    , m_browser(new ServerBrowser(theme, store, this))
    , m_add(new QPushButton(Icons::icon(IconName::Add, theme), tr("Add Server..."), this))
{
    setWindowFlags(Qt::Popup);
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_NoMouseReplay); // a click on the button that opened it closes it, and no more
    setAccessibleName(tr("Servers"));
    setButtonKind(*m_add, ButtonKind::Quiet);

    auto *footer = new Panel(theme, &Tokens::side, Qt::TopEdge, this);
    auto *line = new QHBoxLayout(footer);
    line->setContentsMargins(8, 6, 8, 6);
    line->addWidget(m_add);
    line->addStretch();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(1, 1, 1, 1);
    column->setSpacing(0);
    column->addWidget(m_browser, 1);
    column->addWidget(footer);

    connect(m_browser, &ServerBrowser::chosen, this, &ServerPopup::choose);
    connect(m_browser, &ServerBrowser::menuRequested, this, [this](const QUuid &server, const QPoint &place) {
        close();
        Q_EMIT menuRequested(server, place);
    });
    connect(m_add, &QPushButton::clicked, this, [this] {
        close();
        Q_EMIT addServerRequested();
    });
}

void ServerPopup::openBelow(const QWidget &anchor)
{
    const ServerListModel &model = m_browser->model();
    const QModelIndex selected =
        m_store.selectedServer() ? model.indexOf(m_store.selectedServer()->id) : QModelIndex();
    fit();
    const bool isLeftToRight = layoutDirection() == Qt::LeftToRight;
    QPoint place = anchor.mapToGlobal(QPoint(isLeftToRight ? 0 : anchor.width() - width(), anchor.height() + kGap));
    if (const QScreen *const on = anchor.screen()) {
        const QRect room = on->availableGeometry();
        place.setX(std::clamp(place.x(), room.left(), std::max(room.left(), room.right() + 1 - width())));
        place.setY(std::clamp(place.y(), room.top(), std::max(room.top(), room.bottom() + 1 - height())));
    }
    move(place);
    show();
    m_browser->searchField().setFocus(Qt::PopupFocusReason);
    if (selected.isValid()) {
        m_browser->list().setCurrentIndex(selected);
        m_browser->list().scrollTo(selected, QAbstractItemView::PositionAtCenter);
    }
}

// As high as the servers want it, and so it stays while the search leaves some of them out.
void ServerPopup::fit()
{
    QListView &list = m_browser->list();
    int rows = 0;
    for (int row = 0; row < m_browser->model().rowCount() && rows < kGreatestListHeight; ++row) {
        rows += list.sizeHintForIndex(m_browser->model().index(row)).height();
    }
    list.setMinimumHeight(std::clamp(rows, kLeastListHeight, kGreatestListHeight));
    setFixedSize(kWidth, sizeHint().height());
}

void ServerPopup::choose()
{
    const QModelIndex current = m_browser->list().currentIndex();
    if (current.isValid() && isVisible()) {
        const QUuid id = current.data(ServerListModel::IdRole).toUuid();
        close();
        m_store.setSelectedServer(m_store.server(id));
    }
}
