#include "Views/Theme/TarnwellStyle.h"

#include "Views/Theme/Icons.h"
#include "Views/Theme/MenuStyle.h"
#include "Views/Theme/Shaping.h"
#include "Views/Theme/Theme.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QStyleFactory>
#include <QStyleOption>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kKindProperty = "tarnwellButtonKind";
constexpr auto kWrongProperty = "tarnwellFieldIsWrong";
constexpr int kCheckBoxRing = 4; // between its words and the focus ring
constexpr int kCheckBoxSize = 16;
constexpr qreal kCheckBoxRadius = 4;
constexpr int kButtonPadding = 12;
constexpr int kIconGap = 7;
constexpr int kFieldPadding = 6; // beside what QLineEdit leaves itself
constexpr int kArrowWidth = 28;  // of a field with a list
constexpr int kScrollBarExtent = 12;
constexpr int kScrollBarThickness = 6;
constexpr int kLeastSliderLength = 32;

ButtonKind kindOf(const QWidget *widget)
{
    return widget ? static_cast<ButtonKind>(widget->property(kKindProperty).toInt()) : ButtonKind::Normal;
}

QColor mixed(const QColor &a, const QColor &b, qreal part)
{
    const auto mix = [part](int x, int y) { return qRound(x + (y - x) * part); };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

// A stroke of one pixel is crisp where it runs through the middle of the pixels.
QRectF strokeRect(const QRect &rect)
{
    return QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5);
}

} // namespace

void setButtonKind(QAbstractButton &button, ButtonKind kind)
{
    button.setProperty(kKindProperty, static_cast<int>(kind));
    button.update();
}

void setFieldIsWrong(QWidget &field, bool isWrong)
{
    field.setProperty(kWrongProperty, isWrong);
    field.update();
}

TarnwellStyle::TarnwellStyle(const Theme &theme)
    : QProxyStyle(QStyleFactory::create(u"Fusion"_s))
    , m_theme(theme)
{
}

void TarnwellStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (auto *const field = qobject_cast<QLineEdit *>(widget)) {
        connect(field, &QLineEdit::textChanged, this, &TarnwellStyle::fitFont, Qt::UniqueConnection);
    }
}

// Of the field that says so.
void TarnwellStyle::fitFont(const QString &text)
{
    if (auto *const field = qobject_cast<QLineEdit *>(sender())) {
        field->setFont(Shaping::fit(field->font(), text));
    }
}

int TarnwellStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return kScrollBarExtent;
    case PM_ScrollBarSliderMin:
        return kLeastSliderLength;
    case PM_ScrollView_ScrollBarSpacing:
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_ScrollView_ScrollBarOverlap:
    case PM_MenuHMargin:
    case PM_MenuBarItemSpacing:
    case PM_MenuBarVMargin:
    case PM_MenuBarPanelWidth:
        return 0;
    case PM_MenuBarHMargin:
        return 3;
    case PM_MenuVMargin:
        return Metrics::kStep;
    case PM_MenuPanelWidth:
    case PM_DefaultFrameWidth:
    case PM_SplitterWidth:
        return 1;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
        return kCheckBoxSize;
    case PM_CheckBoxLabelSpacing:
        return 8;
    case PM_ButtonIconSize:
    case PM_SmallIconSize:
        return Metrics::kIconSize;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int TarnwellStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                             QStyleHintReturn *returnData) const
{
    switch (hint) {
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_ScrollView_FrameOnlyAroundContents:
        return 0;
    case SH_ToolTipLabel_Opacity:
        return 255;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

// Fusion's pictures are files, and the first one that is read loads all of Qt's picture formats: four milliseconds of
// a start, for the button that a menu bar shows when it is too narrow for its menus.
QIcon TarnwellStyle::standardIcon(StandardPixmap name, const QStyleOption *option, const QWidget *widget) const
{
    if (name == SP_ToolBarHorizontalExtensionButton) {
        return Icons::icon(IconName::More, m_theme);
    }
    return QProxyStyle::standardIcon(name, option, widget);
}

QSize TarnwellStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                                      const QWidget *widget) const
{
    if (type == CT_PushButton) {
        if (const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option)) {
            int width = 2 * kButtonPadding;
            if (!button->text.isEmpty()) {
                width += button->fontMetrics.horizontalAdvance(button->text) + 1;
            }
            if (!button->icon.isNull()) {
                width += button->iconSize.width() + (button->text.isEmpty() ? -kButtonPadding : kIconGap);
            }
            return {width, Metrics::kControlHeight};
        }
    }
    if (type == CT_MenuBarItem) {
        return MenuStyle::barItemSize(size);
    }
    if (type == CT_MenuItem) {
        if (const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option)) {
            return MenuStyle::itemSize(*item);
        }
    }
    if (type == CT_LineEdit) {
        return {size.width() + 2 * kFieldPadding, Metrics::kControlHeight};
    }
    if (type == CT_ComboBox) {
        return {size.width() + 2 * kFieldPadding + kArrowWidth, Metrics::kControlHeight};
    }
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}

void TarnwellStyle::drawFocusRing(QPainter &painter, const QRectF &rect, qreal radius, const QColor &color)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(color, 2));
    painter.drawRoundedRect(rect.adjusted(1, 1, -1, -1), radius - 1, radius - 1);
    painter.restore();
}

void TarnwellStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                                  const QWidget *widget) const
{
    const Tokens &t = m_theme.tokens();
    switch (element) {
    case PE_PanelButtonCommand:
        drawButton(*option, *painter, widget);
        return;
    case PE_PanelLineEdit: {
        const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
        if (frame && frame->lineWidth > 0) {
            drawField(*option, *painter, widget);
        }
        return;
    }
    case PE_IndicatorCheckBox:
        drawCheckBox(*option, *painter);
        return;
    case PE_FrameLineEdit:
        return; // part of the panel
    case PE_FrameFocusRect:
        drawFocusRing(*painter, QRectF(option->rect), Metrics::kControlRadius, t.accent.color);
        return;
    case PE_PanelTipLabel:
        painter->fillRect(option->rect, t.raised);
        painter->setPen(t.line);
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        return;
    case PE_PanelMenu:
        MenuStyle::drawGround(*painter, option->rect, t);
        return;
    case PE_PanelMenuBar:
    case PE_FrameMenu:
    case PE_PanelScrollAreaCorner:
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void TarnwellStyle::drawButton(const QStyleOption &option, QPainter &painter, const QWidget *widget) const
{
    const Tokens &t = m_theme.tokens();
    const bool isEnabled = option.state.testFlag(State_Enabled);
    const bool isDown = isEnabled && (option.state & (State_Sunken | State_On));
    const bool isHovered = isEnabled && option.state.testFlag(State_MouseOver);
    const ButtonKind kind = kindOf(widget);
    const bool isPrimary = kind == ButtonKind::Primary && isEnabled;

    QColor ground = isPrimary ? t.accent.color : t.surface;
    const QColor pressed = isPrimary ? mixed(t.accent.color, t.text, 0.25) : t.soft;
    if (isDown) {
        ground = pressed;
    } else if (isHovered) {
        ground = mixed(ground, pressed, 0.55);
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (kind != ButtonKind::Quiet || isDown || isHovered) {
        painter.setBrush(ground);
        painter.setPen(isPrimary ? ground : kind == ButtonKind::Quiet ? QColor(Qt::transparent) : t.line);
        painter.drawRoundedRect(strokeRect(option.rect), Metrics::kControlRadius, Metrics::kControlRadius);
    }
    painter.restore();
    if (option.state.testFlag(State_HasFocus)) {
        drawFocusRing(painter, QRectF(option.rect), Metrics::kControlRadius, isPrimary ? t.text : t.accent.color);
    }
}

void TarnwellStyle::drawButtonLabel(const QStyleOptionButton &option, QPainter &painter, const QWidget *widget) const
{
    const Tokens &t = m_theme.tokens();
    const ButtonKind kind = kindOf(widget);
    const bool isEnabled = option.state.testFlag(State_Enabled);
    const QColor color = !isEnabled                    ? t.faint
                         : kind == ButtonKind::Primary ? t.onAccent
                         : kind == ButtonKind::Danger  ? t.red.text
                                                       : t.text;
    const bool hasIcon = !option.icon.isNull();
    const int textWidth = option.text.isEmpty() ? 0 : option.fontMetrics.horizontalAdvance(option.text);
    const int gap = hasIcon && textWidth > 0 ? kIconGap : 0;
    const int iconWidth = hasIcon ? option.iconSize.width() : 0;
    const int left = option.rect.left() + (option.rect.width() - iconWidth - gap - textWidth) / 2;
    if (hasIcon) {
        const QRect place(left, option.rect.top() + (option.rect.height() - option.iconSize.height()) / 2, iconWidth,
                          option.iconSize.height());
        option.icon.paint(&painter, visualRect(option.direction, option.rect, place), Qt::AlignCenter,
                          isEnabled ? QIcon::Normal : QIcon::Disabled);
    }
    if (textWidth > 0) {
        const QRect place(left + iconWidth + gap, option.rect.top(), textWidth + 1, option.rect.height());
        painter.setPen(color);
        painter.drawText(visualRect(option.direction, option.rect, place),
                         Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic, option.text);
    }
}

void TarnwellStyle::drawCheckBox(const QStyleOption &option, QPainter &painter) const
{
    const Tokens &t = m_theme.tokens();
    const bool isEnabled = option.state.testFlag(State_Enabled);
    const bool isSet = option.state & (State_On | State_NoChange);
    const QColor ground = !isSet ? t.surface : isEnabled ? t.accent.color : t.faint;
    const QRectF box = strokeRect(option.rect);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(option.state.testFlag(State_Sunken) ? mixed(ground, t.text, 0.15) : ground);
    painter.setPen(isSet ? ground : option.state.testFlag(State_MouseOver) && isEnabled ? t.dim : t.faint);
    painter.drawRoundedRect(box, kCheckBoxRadius, kCheckBoxRadius);
    painter.setPen(QPen(t.onAccent, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const auto at = [&](qreal x, qreal y) { return box.topLeft() + QPointF(x * box.width(), y * box.height()); };
    if (option.state.testFlag(State_On)) {
        painter.drawPolyline(QPolygonF{at(0.24, 0.53), at(0.43, 0.72), at(0.77, 0.31)});
    } else if (isSet) {
        painter.drawLine(at(0.27, 0.5), at(0.73, 0.5));
    }
    painter.restore();
}

void TarnwellStyle::drawArrow(const QStyleOption &option, QPainter &painter, const QRect &rect) const
{
    const bool isEnabled = option.state.testFlag(State_Enabled);
    const QPointF middle = QRectF(rect).center();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(isEnabled ? m_theme.tokens().dim : m_theme.tokens().faint, 1.5));
    painter.drawPolyline(QPolygonF{middle + QPointF(-4, -2), middle + QPointF(0, 2), middle + QPointF(4, -2)});
    painter.restore();
}

void TarnwellStyle::drawField(const QStyleOption &option, QPainter &painter, const QWidget *widget) const
{
    const Tokens &t = m_theme.tokens();
    const bool isWrong = widget && widget->property(kWrongProperty).toBool();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isReadOnly = option.state.testFlag(State_ReadOnly);
    // A field stands out from what it is on: white on the window, a little darker on a white sheet.
    const bool isOnSheet = widget && widget->window()->windowType() == Qt::Dialog;
    painter.setBrush(isReadOnly ? t.soft : isOnSheet ? t.window : t.surface);
    painter.setPen(isWrong ? t.red.color : t.line);
    painter.drawRoundedRect(strokeRect(option.rect), Metrics::kControlRadius, Metrics::kControlRadius);
    painter.restore();
    if (option.state.testFlag(State_HasFocus)) {
        drawFocusRing(painter, QRectF(option.rect), Metrics::kControlRadius, isWrong ? t.red.color : t.accent.color);
    }
}

void TarnwellStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                                const QWidget *widget) const
{
    switch (element) {
    case CE_PushButtonBevel:
        drawButton(*option, *painter, widget);
        return;
    case CE_PushButtonLabel:
        if (const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option)) {
            drawButtonLabel(*button, *painter, widget);
            return;
        }
        break;
    case CE_PushButton: // the ring is part of the bevel
        drawControl(CE_PushButtonBevel, option, painter, widget);
        drawControl(CE_PushButtonLabel, option, painter, widget);
        return;
    case CE_MenuBarItem:
    case CE_MenuItem:
        if (const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option)) {
            const bool isInBar = element == CE_MenuBarItem;
            isInBar ? MenuStyle::drawBarItem(*painter, *item, m_theme.tokens())
                    : MenuStyle::drawItem(*painter, *item, m_theme.tokens(), painter->device()->devicePixelRatioF());
            return;
        }
        break;
    case CE_MenuBarEmptyArea:
        MenuStyle::drawBarGround(*painter, option->rect, m_theme.tokens());
        return;
    case CE_MenuEmptyArea:
        return;
    case CE_Splitter:
        painter->fillRect(option->rect, m_theme.tokens().line);
        return;
    default:
        break;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

QRect TarnwellStyle::subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const
{
    const QRect rect = QProxyStyle::subElementRect(element, option, widget);
    if (element == SE_CheckBoxFocusRect) {
        return rect.adjusted(-kCheckBoxRing, -1, kCheckBoxRing, 1) & option->rect;
    }
    const auto *frame =
        element == SE_LineEditContents ? qstyleoption_cast<const QStyleOptionFrame *>(option) : nullptr;
    return frame && frame->lineWidth > 0 ? rect.adjusted(kFieldPadding, 0, -kFieldPadding, 0) : rect;
}

QRect TarnwellStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl subControl,
                                    const QWidget *widget) const
{
    if (control == CC_ComboBox && subControl != SC_ComboBoxListBoxPopup) {
        const QRect &all = option->rect;
        const int field = all.width() - kArrowWidth;
        return visualRect(
            option->direction, all,
            subControl == SC_ComboBoxEditField
                ? QRect(all.left() + kFieldPadding, all.top() + 1, field - kFieldPadding, all.height() - 2)
            : subControl == SC_ComboBoxArrow ? QRect(all.left() + field, all.top(), kArrowWidth, all.height())
                                             : all);
    }
    const auto *bar = control == CC_ScrollBar ? qstyleoption_cast<const QStyleOptionSlider *>(option) : nullptr;
    if (!bar) {
        return QProxyStyle::subControlRect(control, option, subControl, widget);
    }
    const bool isHorizontal = bar->orientation == Qt::Horizontal;
    const int length = isHorizontal ? bar->rect.width() : bar->rect.height();
    int slider = length;
    if (bar->maximum != bar->minimum) {
        const qint64 range = qint64(bar->maximum) - bar->minimum;
        slider = std::max<int>(kLeastSliderLength, int(qint64(length) * bar->pageStep / (range + bar->pageStep)));
        slider = std::min(slider, length);
    }
    const int start =
        sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition, length - slider, bar->upsideDown);
    const auto part = [&](int from, int size) {
        const QRect rect = isHorizontal ? QRect(bar->rect.left() + from, bar->rect.top(), size, bar->rect.height())
                                        : QRect(bar->rect.left(), bar->rect.top() + from, bar->rect.width(), size);
        return visualRect(bar->direction, bar->rect, rect);
    };
    switch (subControl) {
    case SC_ScrollBarSlider:
        return part(start, slider);
    case SC_ScrollBarGroove:
        return bar->rect;
    case SC_ScrollBarSubPage:
        return part(0, start);
    case SC_ScrollBarAddPage:
        return part(start + slider, length - start - slider);
    default:
        return {}; // no arrows
    }
}

void TarnwellStyle::drawScrollBar(const QStyleOptionSlider &option, QPainter &painter, const QWidget *widget) const
{
    if (option.maximum == option.minimum) {
        return;
    }
    const Tokens &t = m_theme.tokens();
    const QWidget *const container = widget ? widget->parentWidget() : nullptr;
    const auto *area = qobject_cast<const QAbstractScrollArea *>(container ? container->parentWidget() : nullptr);
    const QWidget *const viewport = area ? area->viewport() : nullptr;
    if (viewport && viewport->autoFillBackground() && viewport->backgroundRole() == QPalette::Base) {
        // The bar goes on with the ground of the list that it scrolls.
        painter.fillRect(option.rect, t.surface);
    }
    const bool isActive = (option.state & State_MouseOver) || (option.activeSubControls & SC_ScrollBarSlider);
    QRectF slider(subControlRect(CC_ScrollBar, &option, SC_ScrollBarSlider, widget));
    const qreal margin = (kScrollBarExtent - kScrollBarThickness) / 2.0;
    slider.adjust(margin, margin, -margin, -margin);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isActive ? t.faint : mixed(t.line, t.faint, 0.35));
    painter.drawRoundedRect(slider, kScrollBarThickness / 2.0, kScrollBarThickness / 2.0);
    painter.restore();
}

void TarnwellStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                                       const QWidget *widget) const
{
    if (control == CC_ScrollBar) {
        if (const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option)) {
            drawScrollBar(*bar, *painter, widget);
            return;
        }
    }
    if (control == CC_ComboBox) {
        drawField(*option, *painter, widget);
        drawArrow(*option, *painter, subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget));
        return;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}
