#pragma once

#include <QProxyStyle>

class QAbstractButton;
class Theme;

/// What pressing a button means; it decides the button's colours.
enum class ButtonKind {
    Normal,
    Primary, ///< the one thing to do on this page
    Danger,  ///< destroys or cuts off something
    Quiet    ///< no border until it is pointed at: icons inside bars
};

void setButtonKind(QAbstractButton &button, ButtonKind kind);

/// What stands in the field cannot be accepted: its border tells.
void setFieldIsWrong(QWidget &field, bool isWrong);

/// Fusion with the house's controls: buttons, fields, scroll bars, tooltips, splitters and the focus ring are painted
/// from the theme's tokens at the moment of painting, so that a switch of the theme needs nothing but a repaint.
class TarnwellStyle : public QProxyStyle
{
    Q_OBJECT

public:
    /// `theme` outlives the style.
    explicit TarnwellStyle(const Theme &theme);

    using QProxyStyle::polish;
    void polish(QWidget *widget) override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override;
    QIcon standardIcon(StandardPixmap name, const QStyleOption *option, const QWidget *widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl subControl,
                         const QWidget *widget) const override;

    /// The ring around whatever has the keyboard, just inside `rect`.
    static void drawFocusRing(QPainter &painter, const QRectF &rect, qreal radius, const QColor &color);

private:
    void fitFont(const QString &text);
    void drawButton(const QStyleOption &option, QPainter &painter, const QWidget *widget) const;
    void drawButtonLabel(const class QStyleOptionButton &option, QPainter &painter, const QWidget *widget) const;
    void drawField(const QStyleOption &option, QPainter &painter, const QWidget *widget) const;
    void drawArrow(const QStyleOption &option, QPainter &painter, const QRect &rect) const;
    void drawCheckBox(const QStyleOption &option, QPainter &painter) const;
    void drawScrollBar(const class QStyleOptionSlider &option, QPainter &painter, const QWidget *widget) const;

    const Theme &m_theme;
};
