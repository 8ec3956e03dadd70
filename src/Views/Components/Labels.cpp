#include "Views/Components/Labels.h"

#include "Views/Components/PlainText.h"
#include "Views/Theme/Shaping.h"

#include <QFocusEvent>
#include <QPainter>
#include <QStyle>
#include <algorithm>

TextLabel::TextLabel(const Theme &theme, TextStyle style, const QString &text, Shade shade, QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setFont(theme.font(style));
    setForegroundRole(shade == Shade::Dim ? QPalette::PlaceholderText : QPalette::WindowText);
    setText(text);
}

void TextLabel::setText(const QString &text)
{
    setFont(Shaping::fit(font(), text));
    QLabel::setText(text);
}

void TextLabel::setSelectable()
{
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFocusPolicy(Qt::StrongFocus); // Qt leaves Tab out
}

void TextLabel::focusInEvent(QFocusEvent *event)
{
    QLabel::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        setSelection(0, static_cast<int>(text().size()));
    }
}

void TextLabel::focusOutEvent(QFocusEvent *event)
{
    QLabel::focusOutEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        setSelection(0, 0);
    }
}

ElidedLabel::ElidedLabel(const Theme &theme, TextStyle style, Shade shade, Qt::TextElideMode mode, QWidget *parent)
    : TextLabel(theme, style, {}, shade, parent)
    , m_mode(mode)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setFullText(const QString &text)
{
    const QString line = PlainText::oneLine(text);
    if (line != this->text()) {
        setText(line);
        updateToolTip();
    }
}

bool ElidedLabel::isElided() const
{
    return fontMetrics().horizontalAdvance(text()) > contentsRect().width();
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {std::min(fontMetrics().horizontalAdvance(u'…') * 3, sizeHint().width()), fontMetrics().height()};
}

QSize ElidedLabel::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(text()) + 1, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), m_mode, contentsRect().width());
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment() | Qt::TextSingleLine), palette(),
                          isEnabled(), shown, foregroundRole());
}

void ElidedLabel::resizeEvent(QResizeEvent *event)
{
    TextLabel::resizeEvent(event);
    updateToolTip();
}

void ElidedLabel::updateToolTip()
{
    PlainText::setToolTip(*this, isElided() ? text() : QString());
}
