#include "Views/Shell/ServerRowDelegate.h"

#include "Views/Components/Pill.h"
#include "Views/Shell/LabelTone.h"
#include "Views/Shell/ServerListModel.h"
#include "Views/Theme/LineText.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QFontMetrics>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace
{

constexpr QMargins kOuter(8, 2, 8, 2);
constexpr QMargins kInner(10, 8, 10, 8);
constexpr int kRadius = 8;
constexpr int kDotGap = 7;
constexpr int kAddressGap = 1;
constexpr int kLabelsGap = 5;
constexpr int kBetweenLabels = 5;
constexpr int kLeastLabelWidth = 36;

} // namespace

ServerRowDelegate::ServerRowDelegate(const Theme &theme, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_theme(theme)
    , m_nameFont(theme.font(TextStyle::Emphasis))
    , m_addressFont(theme.font(TextStyle::Small))
    , m_labelFont(theme.font(TextStyle::Tag))
    , m_nameHeight(QFontMetrics(m_nameFont).height())
    , m_addressHeight(QFontMetrics(m_addressFont).height())
    , m_labelHeight(Pill::sizeFor(u"x"_s, m_labelFont).height())
{
}

QSize ServerRowDelegate::sizeHint(const QStyleOptionViewItem &, const QModelIndex &index) const
{
    const int words = m_nameHeight + kAddressGap + m_addressHeight;
    const int labels = index.data(ServerListModel::HasLabelsRole).toBool() ? kLabelsGap + m_labelHeight : 0;
    return {120, kOuter.top() + kInner.top() + words + labels + kInner.bottom() + kOuter.bottom()};
}

QColor ServerRowDelegate::dotColor(const Theme &theme, ServerListModel::State state)
{
    switch (state) {
    case ServerListModel::State::Connected:
        return theme.tokens().green.color;
    case ServerListModel::State::Connecting:
        return theme.tokens().orange.color;
    case ServerListModel::State::NotConnected:
        break;
    }
    QColor color = theme.tokens().faint;
    color.setAlphaF(0.45F);
    return color;
}

void ServerRowDelegate::paintGround(QPainter &painter, const QStyleOptionViewItem &option, const QRect &ground,
                                    bool isMarked) const
{
    const Tokens &t = m_theme.tokens();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    if (isSelected || isMarked || option.state.testFlag(QStyle::State_MouseOver)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isSelected ? t.accent.soft : t.soft);
        painter.drawRoundedRect(ground, kRadius, kRadius);
    }
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        TarnwellStyle::drawFocusRing(painter, QRectF(ground), kRadius, t.accent.color);
    }
}

void ServerRowDelegate::paintLabels(QPainter &painter, const QRect &line, const QStringList &labels) const
{
    QRect place = line;
    for (const QString &label : labels) {
        const int room = line.right() - place.left() + 1;
        if (room < kLeastLabelWidth) {
            break;
        }
        const LineText words(label, m_labelFont);
        place.setWidth(std::min(Pill::sizeFor(words).width(), room));
        Pill::paint(painter, place, words, m_theme.tone(labelTone(label)));
        place.moveLeft(place.right() + 1 + kBetweenLabels);
    }
}

void ServerRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect ground = option.rect.marginsRemoved(kOuter);
    paintGround(*painter, option, ground, index == m_marked);

    const QRect inside = ground.marginsRemoved(kInner);
    const auto drawLine = [&](const QRect &rect, const QFont &font, const QColor &color, const QString &text) {
        painter->setPen(color);
        LineText(text, font).paint(*painter, rect);
    };
    QRect line(inside.left(), inside.top(), inside.width(), m_nameHeight);
    StateDot::paint(*painter, {line.left() + StateDot::kDiameter / 2.0, line.center().y() + 0.5},
                    dotColor(m_theme, index.data(ServerListModel::StateRole).value<ServerListModel::State>()));
    drawLine(line.adjusted(StateDot::kDiameter + kDotGap, 0, 0, 0), m_nameFont, m_theme.tokens().text,
             index.data(Qt::DisplayRole).toString());
    line = QRect(inside.left(), line.bottom() + 1 + kAddressGap, inside.width(), m_addressHeight);
    drawLine(line, m_addressFont, m_theme.tokens().dim, index.data(ServerListModel::AddressRole).toString());
    if (index.data(ServerListModel::HasLabelsRole).toBool()) {
        line = QRect(inside.left(), line.bottom() + 1 + kLabelsGap, inside.width(), m_labelHeight);
        paintLabels(*painter, line, index.data(ServerListModel::LabelsRole).toStringList());
    }
    painter->restore();
}
