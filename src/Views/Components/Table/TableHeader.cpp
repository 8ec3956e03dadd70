#include "Views/Components/Table/TableHeader.h"

#include "Views/Components/Table/RecordDelegate.h"
#include "Views/Components/Table/TableModel.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/Theme.h"

#include <QMouseEvent>
#include <QPainter>

namespace
{

constexpr int kHeight = 31;
constexpr int kLeastWidth = 48;
constexpr int kLeastStretchedWidth = 160;
constexpr int kArrowSize = 8;
constexpr int kArrowGap = 4;

} // namespace

TableHeader::TableHeader(const Theme &theme, TableModel &model, int actionsWidth, QWidget *parent)
    : QHeaderView(Qt::Horizontal, parent)
    , m_theme(theme)
    , m_model(model)
    , m_actionsWidth(actionsWidth)
{
    setFont(theme.font(TextStyle::Caption));
    setSectionsClickable(true);
    setHighlightSections(false);
    setMinimumSectionSize(kLeastWidth);
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus);
    connect(this, &QHeaderView::sectionClicked, &model, &TableModel::sortBy);
    connect(this, &QHeaderView::sectionResized, this, &TableHeader::resized);
    connect(&model, &TableModel::sortChanged, this, [this] { viewport()->update(); });
}

void TableHeader::start()
{
    m_isFilling = true;
    setSectionResizeMode(QHeaderView::Interactive);
    for (int column = 0; column < m_model.columns().size(); ++column) {
        const ColumnLook &look = m_model.columns().at(column);
        resizeSection(column, look.width);
        if (look.stretches) {
            m_stretching = column;
        }
    }
    if (count() > m_model.columns().size()) {
        resizeSection(count() - 1, m_actionsWidth);
        setSectionResizeMode(count() - 1, QHeaderView::Fixed);
    }
    m_isFilling = false;
    fill(m_width);
}

void TableHeader::fill(int width)
{
    m_width = width;
    if (m_stretching < 0 || m_isFilling) {
        return;
    }
    m_isFilling = true;
    const int others = length() - sectionSize(m_stretching);
    const int least = std::min(kLeastStretchedWidth, m_model.columns().at(m_stretching).width);
    resizeSection(m_stretching, std::max(least, m_width - others));
    m_isFilling = false;
}

void TableHeader::resized(int column)
{
    if (m_isFilling) {
        return;
    }
    if (column == m_stretching) {
        m_stretching = -1; // it has the width that it was given
    }
    fill(m_width);
    Q_EMIT widthsChanged();
}

QList<int> TableHeader::widths() const
{
    QList<int> widths;
    for (int column = 0; column < m_model.columns().size(); ++column) {
        widths.append(column == m_stretching ? 0 : sectionSize(column));
    }
    return widths;
}

void TableHeader::setWidths(const QList<int> &widths)
{
    if (widths.size() != m_model.columns().size()) {
        return;
    }
    m_isFilling = true;
    for (int column = 0; column < widths.size(); ++column) {
        if (widths.at(column) > 0) {
            resizeSection(column, widths.at(column));
        }
    }
    m_stretching = static_cast<int>(widths.indexOf(0));
    m_isFilling = false;
    fill(m_width);
}

QSize TableHeader::sizeHint() const
{
    return {QHeaderView::sizeHint().width(), kHeight};
}

void TableHeader::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), m_theme.tokens().surface);
    painter.fillRect(QRect(0, viewport()->height() - 1, viewport()->width(), 1), m_theme.tokens().line);
    painter.end();
    QHeaderView::paintEvent(event);
}

void TableHeader::paintSection(QPainter *painter, const QRect &rect, int column) const
{
    const Tokens &t = m_theme.tokens();
    const bool isSorting = column == m_model.sortColumn();
    const bool isAtRight =
        column < m_model.columns().size() && m_model.columns().at(column).align == CellAlign::Right;
    const QString title = m_model.headerData(column, Qt::Horizontal).toString();
    const QRect inside = rect.adjusted(RecordDelegate::kPadding, 0, -RecordDelegate::kPadding, -1);
    const int arrow = isSorting ? kArrowSize + kArrowGap : 0;
    QFont words = font();
    words.setWeight(QFont::DemiBold);
    painter->setFont(words);
    const QString shown = painter->fontMetrics().elidedText(title, Qt::ElideRight, inside.width() - arrow);
    const int width = painter->fontMetrics().horizontalAdvance(shown);
    const int left = isAtRight ? inside.right() + 1 - arrow - width : inside.left();
    const bool isLit = isSorting || (column == m_hovered && column < m_model.columns().size() &&
                                     m_model.columns().at(column).isSortable);
    painter->setPen(isLit ? t.text : t.dim);
    painter->drawText(QRect(left, inside.top(), width + 1, inside.height()), Qt::AlignVCenter | Qt::TextSingleLine,
                      shown);
    if (isSorting) {
        const IconName icon = m_model.sortOrder() == Qt::AscendingOrder ? IconName::CaretUp : IconName::CaretDown;
        painter->drawPixmap(left + width + kArrowGap, inside.top() + (inside.height() - kArrowSize) / 2 + 1,
                            Icons::pixmap(icon, t.text, kArrowSize, devicePixelRatioF()));
    }
    if (column == m_hovered) {
        painter->fillRect(QRect(rect.right(), rect.top() + 8, 1, rect.height() - 16), t.line);
    }
}

void TableHeader::mouseMoveEvent(QMouseEvent *event)
{
    QHeaderView::mouseMoveEvent(event);
    const int hovered = logicalIndexAt(event->position().toPoint());
    if (std::exchange(m_hovered, hovered) != hovered) {
        viewport()->update();
    }
}

void TableHeader::leaveEvent(QEvent *event)
{
    QHeaderView::leaveEvent(event);
    m_hovered = -1;
    viewport()->update();
}
