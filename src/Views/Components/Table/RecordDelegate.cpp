#include "Views/Components/Table/RecordDelegate.h"

#include "Views/Components/Pill.h"
#include "Views/Components/PlainText.h"
#include "Views/Components/Spinner.h"
#include "Views/Components/Table/TableModel.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/LineText.h"
#include "Views/Theme/Shaping.h"
#include "Views/Theme/Theme.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kButtonSize = 26;
constexpr int kButtonGap = 4;
constexpr int kIconGap = 9;
constexpr int kMarkSize = 14;
constexpr int kMarkGap = 8;
constexpr int kLongestShown = 600;

// What can be seen of a text at most, on one line; the longest texts of servers would take long to measure.
QString shownText(const QString &text)
{
    return PlainText::oneLine(
        text.size() <= kLongestShown ? text : text.left(kLongestShown / 2) + u'…' + text.right(kLongestShown / 2));
}

QFont semibold(QFont font)
{
    font.setWeight(QFont::DemiBold);
    return font;
}

} // namespace

RecordDelegate::RecordDelegate(const Theme &theme, TableModel &model, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_theme(theme)
    , m_model(model)
    , m_plainFont(theme.font(TextStyle::Detail))
    , m_emphasisFont(m_plainFont)
    , m_monoFont(theme.font(TextStyle::Mono))
    , m_pillFont(theme.font(TextStyle::Caption))
    , m_figures(m_plainFont)
    , m_strongFigures(semibold(m_plainFont))
{
    m_emphasisFont.setWeight(QFont::Medium);
}

const QFont &RecordDelegate::fontOf(CellStyle style) const
{
    switch (style) {
    case CellStyle::Emphasis:
        return m_emphasisFont;
    case CellStyle::Mono:
        return m_monoFont;
    case CellStyle::Pill:
        return m_pillFont;
    case CellStyle::Plain:
    case CellStyle::Dim:
        break;
    }
    return m_plainFont;
}

bool RecordDelegate::isLastColumn(int column) const
{
    return column == m_model.columnCount() - 1;
}

int RecordDelegate::actionsWidth() const
{
    // Two actions that exclude one another, like start and stop, still have places of their own.
    const auto count = static_cast<int>(std::ranges::count_if(m_model.actions(), &ActionLook::isButton));
    const int words = QFontMetrics(m_theme.font(TextStyle::Caption)).horizontalAdvance(TableModel::tr("Actions"));
    return std::max(count * (kButtonSize + kButtonGap) + kMarkGap + kMarkSize, words + 8) + 2 * kPadding;
}

QList<RecordDelegate::Button> RecordDelegate::buttons(const QRect &cell, int row) const
{
    QList<Button> buttons;
    int left = cell.left() + kPadding - (kButtonSize - Metrics::kIconSize) / 2;
    for (int action = 0; action < m_model.actions().size(); ++action) {
        if (m_model.actions().at(action).isButton && m_model.isOffered(row, action)) {
            buttons.append(
                {action, {left, cell.top() + (cell.height() - 1 - kButtonSize) / 2, kButtonSize, kButtonSize}});
            left += kButtonSize + kButtonGap;
        }
    }
    return buttons;
}

int RecordDelegate::actionAt(const QPoint &position, const QRect &cell, int row) const
{
    if (m_model.isBusy(row)) {
        return -1;
    }
    for (const Button &button : buttons(cell, row)) {
        if (button.rect.contains(position)) {
            return button.action;
        }
    }
    return -1;
}

QRect RecordDelegate::markRect(const QRect &cell) const
{
    return {cell.right() - kPadding - kMarkSize + 1, cell.top() + (cell.height() - 1 - kMarkSize) / 2, kMarkSize,
            kMarkSize};
}

QRect RecordDelegate::wordsRect(const QRect &cell, int row, int column, bool hasIcon) const
{
    const bool hasMark = isLastColumn(column) && (m_model.isBusy(row) || !m_model.errorAt(row).isEmpty());
    return cell.adjusted(kPadding + (hasIcon ? Metrics::kIconSize + kIconGap : 0), 0,
                         -kPadding - (hasMark ? kMarkSize + kMarkGap : 0), -1);
}

bool RecordDelegate::isCut(const QRect &cell, int row, int column) const
{
    const CellLook look = m_model.cell(row, column);
    const ColumnLook &of = m_model.columns().at(column);
    const int room = wordsRect(cell, row, column, look.icon.has_value()).width();
    if (look.text.size() > kLongestShown) {
        return true;
    }
    const QString text = shownText(look.text);
    return of.style == CellStyle::Pill ? Pill::sizeFor(text, m_pillFont).width() > room
                                       : QFontMetrics(fontOf(of.style)).horizontalAdvance(text) > room;
}

void RecordDelegate::setHovered(int row, int action)
{
    m_hoveredRow = row;
    m_hoveredAction = action;
}

QSize RecordDelegate::sizeHint(const QStyleOptionViewItem &, const QModelIndex &index) const
{
    if (index.column() >= m_model.columns().size()) {
        return {actionsWidth(), Metrics::kRowHeight};
    }
    const CellLook look = m_model.cell(index.row(), index.column());
    const CellStyle style = m_model.columns().at(index.column()).style;
    const QString text = shownText(look.text);
    const int words = style == CellStyle::Pill ? Pill::sizeFor(text, m_pillFont).width()
                                               : QFontMetrics(fontOf(style)).horizontalAdvance(text) + 2;
    return {words + 2 * kPadding + (look.icon ? Metrics::kIconSize + kIconGap : 0), Metrics::kRowHeight};
}

void RecordDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const Tokens &t = m_theme.tokens();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool isHovered = index.row() == m_hoveredRow;
    if (isSelected || isHovered) {
        painter->fillRect(option.rect, isSelected ? t.accent.soft : t.soft);
    }
    painter->fillRect(QRect(option.rect.left(), option.rect.bottom(), option.rect.width(), 1), t.soft);
    painter->save();
    painter->setClipRect(option.rect);
    if (index.column() < m_model.columns().size()) {
        paintWords(*painter, option.rect, index.row(), index.column());
    } else {
        paintActions(*painter, option.rect, index.row(), isSelected || isHovered);
    }
    if (isLastColumn(index.column())) {
        paintMark(*painter, option.rect, index.row());
    }
    painter->restore();
}

void RecordDelegate::paintWords(QPainter &painter, const QRect &cell, int row, int column) const
{
    const Tokens &t = m_theme.tokens();
    const CellLook look = m_model.cell(row, column);
    const ColumnLook &of = m_model.columns().at(column);
    const bool isGone = m_model.isGone(row);
    const QString text = shownText(look.text);
    const QRect words = wordsRect(cell, row, column, look.icon.has_value());
    if (look.icon) {
        const QColor &color = isGone ? t.faint : look.tone ? m_theme.tone(*look.tone).text : t.dim;
        painter.drawPixmap(
            cell.left() + kPadding, cell.top() + (cell.height() - 1 - Metrics::kIconSize) / 2,
            Icons::pixmap(*look.icon, color, Metrics::kIconSize, painter.device()->devicePixelRatioF()));
    }
    if (text.isEmpty()) {
        return;
    }
    if (of.style == CellStyle::Pill && !isGone) {
        const LineText line(text, m_pillFont);
        QRect pill({}, Pill::sizeFor(line).boundedTo({words.width(), words.height()}));
        pill.moveTopLeft({words.left(), words.top() + (words.height() - pill.height()) / 2});
        Pill::paint(painter, pill, line, m_theme.tone(look.tone.value_or(ToneName::Gray)));
        return;
    }
    painter.setPen(isGone                       ? t.dim
                   : look.tone && !look.icon    ? m_theme.tone(*look.tone).text
                   : of.style == CellStyle::Dim ? t.dim
                                                : t.text);
    if (of.align == CellAlign::Right && !isGone) {
        const bool standsOut = look.tone && !look.icon;
        (standsOut ? m_strongFigures : m_figures).drawAtRight(painter, words, text);
        return;
    }
    QFont font = Shaping::fit(fontOf(of.style), text);
    font.setStrikeOut(isGone);
    painter.setFont(font);
    const auto edge = of.align == CellAlign::Right ? Qt::AlignRight : Qt::AlignLeft;
    painter.drawText(words, static_cast<int>(Qt::AlignVCenter | edge | Qt::TextSingleLine),
                     painter.fontMetrics().elidedText(text, of.elide, words.width()));
}

void RecordDelegate::paintActions(QPainter &painter, const QRect &cell, int row, bool isLit) const
{
    if (m_model.isBusy(row)) {
        return;
    }
    const Tokens &t = m_theme.tokens();
    for (const Button &button : buttons(cell, row)) {
        const ActionLook &look = m_model.actions().at(button.action);
        const bool isEnabled = m_model.isEnabled(row, button.action);
        if (isEnabled && row == m_hoveredRow && button.action == m_hoveredAction) {
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(t.line);
            painter.setBrush(t.surface);
            painter.drawRoundedRect(QRectF(button.rect).adjusted(0.5, 0.5, -0.5, -0.5), Metrics::kControlRadius - 1,
                                    Metrics::kControlRadius - 1);
        }
        // Red in every row would shout: what destroys is red where the pointer or the selection is.
        const QColor &color = !isEnabled ? t.faint : look.isDestructive && isLit ? t.red.text : t.dim;
        const int inset = (kButtonSize - Metrics::kIconSize) / 2;
        painter.drawPixmap(button.rect.topLeft() + QPoint(inset, inset),
                           Icons::pixmap(look.icon.value_or(IconName::More), color, Metrics::kIconSize,
                                         painter.device()->devicePixelRatioF()));
    }
}

void RecordDelegate::paintMark(QPainter &painter, const QRect &cell, int row) const
{
    const QRect mark = markRect(cell);
    if (m_model.isBusy(row)) {
        paintSpinner(painter, QRectF(mark).center());
    } else if (!m_model.errorAt(row).isEmpty()) {
        painter.drawPixmap(mark.topLeft(), Icons::pixmap(IconName::Warning, m_theme.tokens().red.text, kMarkSize,
                                                         painter.device()->devicePixelRatioF()));
    }
}

void RecordDelegate::paintSpinner(QPainter &painter, const QPointF &middle) const
{
    const Tokens &t = m_theme.tokens();
    const QRectF circle(middle.x() - 6, middle.y() - 6, 12, 12);
    Spinner::paint(painter, circle, 2, t.line, t.accent.color, m_turn / 360);
}
