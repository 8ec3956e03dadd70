#pragma once

#include "Views/Theme/Theme.h"

#include <QWidget>

class LineText;
class QPainter;

/// A short word on a soft, fully rounded ground; with a dot where it tells a state.
class Pill : public QWidget
{
    Q_OBJECT

public:
    enum class Dot { Without, With };

    Pill(const Theme &theme, Dot dot, QWidget *parent = nullptr);

    void setState(const QString &text, ToneName tone);

    QString text() const { return m_text; }

    ToneName tone() const { return m_tone; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    // For rows, which are painted and have no widgets of their own.

    static QSize sizeFor(const QString &text, const QFont &font, Dot dot = Dot::Without);
    static QSize sizeFor(const LineText &text, Dot dot = Dot::Without);

    /// Paints into `rect`; text that doesn't fit is elided.
    static void paint(QPainter &painter, const QRect &rect, const QString &text, const QFont &font, const Tone &tone,
                      Dot dot = Dot::Without);
    static void paint(QPainter &painter, const QRect &rect, const LineText &text, const Tone &tone,
                      Dot dot = Dot::Without);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    Dot m_dot;
    QString m_text;
    ToneName m_tone = ToneName::Gray;
};

/// The round mark of a state.
namespace StateDot
{

inline constexpr int kDiameter = 8;

void paint(QPainter &painter, const QPointF &center, const QColor &color);

} // namespace StateDot
