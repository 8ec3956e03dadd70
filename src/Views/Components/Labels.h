#pragma once

#include "Views/Theme/Theme.h"

#include <QLabel>

/// Words in a step of the type scale, always as plain text.
class TextLabel : public QLabel
{
    Q_OBJECT

public:
    enum class Shade { Text, Dim };

    TextLabel(const Theme &theme, TextStyle style, const QString &text = {}, Shade shade = Shade::Text,
              QWidget *parent = nullptr);

    void setText(const QString &text);

    /// The words can be selected and copied. Tab stops at them, and selects all.
    void setSelectable();

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
};

/// One line of text that shrinks: what doesn't fit is elided, and the whole text is in the tooltip then.
class ElidedLabel : public TextLabel
{
    Q_OBJECT

public:
    /// `mode`: Qt::ElideMiddle for paths, Qt::ElideRight otherwise.
    ElidedLabel(const Theme &theme, TextStyle style, Shade shade = Shade::Text,
                Qt::TextElideMode mode = Qt::ElideRight, QWidget *parent = nullptr);

    /// Any text. text() is the whole of it, on one line.
    void setFullText(const QString &text);

    bool isElided() const;

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void updateToolTip();

    Qt::TextElideMode m_mode;
};
