#include "Views/Shell/NavigationSidebarView.h"

#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/HistoryButtons.h"
#include "Views/Shell/Sections.h"
#include "Views/Shell/SidebarList.h"
#include "Views/Theme/LineText.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QAbstractListModel>
#include <QHBoxLayout>
#include <QListView>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace
{

constexpr int kRestMs = 200;
constexpr QMargins kOuter(8, 0, 8, 1);
constexpr int kRowHeight = 30;
constexpr int kPadding = 9;
constexpr int kMarkRole = Qt::UserRole;

MainTab tabOf(const QModelIndex &index)
{
    return static_cast<MainTab>(index.row());
}

class SectionListModel : public QAbstractListModel
{
public:
    SectionListModel(const ContentViewModel &model, QObject *parent)
        : QAbstractListModel(parent)
        , m_model(model)
    {
        connect(&model, &ContentViewModel::markChanged, this, [this](MainTab tab) {
            const QModelIndex changed = index(static_cast<int>(tab), 0);
            Q_EMIT dataChanged(changed, changed);
        });
    }

    int rowCount(const QModelIndex &parent) const override { return parent.isValid() ? 0 : kMainTabCount; }

    QVariant data(const QModelIndex &index, int role) const override
    {
        switch (role) {
        case Qt::DisplayRole:
            return Sections::title(tabOf(index));
        case Qt::ToolTipRole:
            return Sections::toolTip(tabOf(index));
        case Qt::AccessibleDescriptionRole:
            return QStringList{Sections::shortcutText(tabOf(index)), Sections::described(m_model.mark(tabOf(index)))}
                .join(u' ')
                .trimmed();
        case kMarkRole:
            return static_cast<int>(m_model.mark(tabOf(index)));
        default:
            return {};
        }
    }

private:
    const ContentViewModel &m_model;
};

class SectionRowDelegate : public QStyledItemDelegate
{
public:
    SectionRowDelegate(const Theme &theme, QObject *parent)
        : QStyledItemDelegate(parent)
        , m_theme(theme)
        , m_font(theme.font(TextStyle::Body))
        , m_selectedFont(theme.font(TextStyle::Emphasis))
        , m_shortcutFont(theme.font(TextStyle::Tag))
    {
    }

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return {120, kOuter.top() + kRowHeight + kOuter.bottom()};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const Tokens &t = m_theme.tokens();
        const bool isSelected = option.state.testFlag(QStyle::State_Selected);
        painter->save();
        const QRect ground = option.rect.marginsRemoved(kOuter);
        paintGround(*painter, option, ground);

        const QColor color = isSelected ? t.accent.text : t.dim;
        QRect inside = ground.adjusted(kPadding, 0, -kPadding, 0);
        const QPoint icon(inside.left(), inside.center().y() - Metrics::kIconSize / 2 + 1);
        painter->drawPixmap(icon, Icons::pixmap(Sections::of(tabOf(index)).icon, color, Metrics::kIconSize,
                                                painter->device()->devicePixelRatioF()));
        Sections::paintMark(*painter, m_theme, static_cast<SectionMark>(index.data(kMarkRole).toInt()),
                            icon + QPoint(Metrics::kIconSize, 0));
        inside.adjust(Metrics::kIconSize + kPadding, 0, 0, 0);
        const LineText title(Sections::title(tabOf(index)), isSelected ? m_selectedFont : m_font);
        painter->setPen(color);
        title.paint(*painter, inside);
        paintShortcut(*painter, inside, title.width(), tabOf(index));
        painter->restore();
    }

private:
    void paintGround(QPainter &painter, const QStyleOptionViewItem &option, const QRect &ground) const
    {
        const Tokens &t = m_theme.tokens();
        const bool isSelected = option.state.testFlag(QStyle::State_Selected);
        painter.setRenderHint(QPainter::Antialiasing);
        if (isSelected || option.state.testFlag(QStyle::State_MouseOver)) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(isSelected ? t.accent.soft : t.soft);
            painter.drawRoundedRect(ground, Metrics::kControlRadius, Metrics::kControlRadius);
        }
        if (option.state.testFlag(QStyle::State_HasFocus)) {
            TarnwellStyle::drawFocusRing(painter, QRectF(ground), Metrics::kControlRadius, t.accent.color);
        }
    }

    // Only where the title leaves room for it.
    void paintShortcut(QPainter &painter, const QRect &inside, int titleWidth, MainTab tab) const
    {
        const LineText shortcut(Sections::shortcutText(tab), m_shortcutFont);
        if (titleWidth + kPadding + shortcut.width() <= inside.width()) {
            painter.setPen(m_theme.tokens().faint);
            shortcut.paint(painter, inside, Qt::AlignRight);
        }
    }

    const Theme &m_theme;
    QFont m_font;
    QFont m_selectedFont;
    QFont m_shortcutFont;
};

} // namespace

NavigationSidebarView::NavigationSidebarView(const Theme &theme, ContentViewModel &model, QWidget *parent)
    : Panel(theme, &Tokens::window, {}, parent)
    , m_model(model)
    , m_historyButtons(new HistoryButtons(theme, model, this))
    , m_list(new SidebarList(tr("Sections"), this))
{
    m_list->setModel(new SectionListModel(model, m_list));
    m_list->setItemDelegate(new SectionRowDelegate(theme, m_list));
    m_list->setUniformItemSizes(true);

    auto *steps = new QHBoxLayout;
    steps->setContentsMargins(14, 0, 14, 0);
    steps->addWidget(m_historyButtons);
    steps->addStretch();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 12, 0, 8);
    column->setSpacing(10);
    column->addLayout(steps);
    column->addWidget(m_list, 1);

    m_rest.setSingleShot(true);
    m_rest.setInterval(kRestMs);
    follow();
    connect(&m_rest, &QTimer::timeout, this, &NavigationSidebarView::chooseCurrent);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, &m_rest, qOverload<>(&QTimer::start));
    connect(m_list, &QListView::clicked, this, &NavigationSidebarView::chooseCurrent);
    connect(m_list, &QListView::activated, this, &NavigationSidebarView::chooseCurrent);
    connect(&model, &ContentViewModel::placeChanged, this, &NavigationSidebarView::follow);
}

void NavigationSidebarView::chooseCurrent()
{
    m_rest.stop();
    m_model.chooseTab(tabOf(m_list->currentIndex()));
}

void NavigationSidebarView::follow()
{
    m_list->setCurrentIndex(m_list->model()->index(static_cast<int>(m_model.selectedTab()), 0));
    m_rest.stop();
}
