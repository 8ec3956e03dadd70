#include "Views/Components/SegmentedControl.h"

#include "Views/Components/PlainText.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

namespace
{

constexpr int kPadding = 11;
constexpr int kLeastPadding = 6;

} // namespace

class SegmentedControl::Segment : public QAbstractButton
{
public:
    Segment(const Theme &theme, const QString &text, SegmentedControl *parent)
        : QAbstractButton(parent)
        , m_theme(theme)
        , m_chosenFont(theme.font(TextStyle::Small))
    {
        setFont(m_chosenFont);
        m_chosenFont.setWeight(QFont::DemiBold);
        setText(text);
        setAccessibleName(text);
        setCheckable(true);
        setAutoExclusive(true);
        setFocusPolicy(Qt::ClickFocus);
        setAttribute(Qt::WA_Hover);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

    void setEdges(bool isFirst, bool isLast)
    {
        m_isFirst = isFirst;
        m_isLast = isLast;
    }

    // The chosen segment's words are bolder; every segment keeps room for that.
    QSize sizeHint() const override { return {wordsWidth() + 2 * kPadding, Metrics::kControlHeight}; }

    QSize minimumSizeHint() const override
    {
        const int least = QFontMetrics(m_chosenFont).horizontalAdvance(u'…') * 3;
        return {std::min(least, wordsWidth()) + 2 * kLeastPadding, Metrics::kControlHeight};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const Tokens &t = m_theme.tokens();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF frame = QRectF(rect()).adjusted(m_isFirst ? 0.5 : -0.5, 0.5, -0.5, -0.5);
        painter.setClipRect(rect());
        painter.setPen(t.line);
        painter.setBrush(isChecked()                                 ? t.accent.soft
                         : isDown() || (underMouse() && isEnabled()) ? t.soft
                                                                     : t.surface);
        painter.drawPath(outline(frame));
        painter.setFont(isChecked() ? m_chosenFont : font());
        painter.setPen(!isEnabled() ? t.faint : isChecked() ? t.accent.text : t.dim);
        const QRect words = rect().adjusted(kLeastPadding, 0, -kLeastPadding, 0);
        painter.drawText(words, Qt::AlignCenter | Qt::TextSingleLine,
                         painter.fontMetrics().elidedText(text(), Qt::ElideRight, words.width()));
        if (hasFocus()) {
            TarnwellStyle::drawFocusRing(painter, QRectF(rect()), Metrics::kControlRadius, t.accent.color);
        }
    }

    void resizeEvent(QResizeEvent *event) override
    {
        QAbstractButton::resizeEvent(event);
        const bool isCut = width() < wordsWidth() + 2 * kLeastPadding;
        PlainText::setToolTip(*this, isCut ? text() : QString());
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        switch (event->key()) {
        case Qt::Key_Left:
        case Qt::Key_Right:
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Home:
        case Qt::Key_End:
            event->ignore(); // the whole control's
            return;
        default:
            QAbstractButton::keyPressEvent(event);
        }
    }

private:
    int wordsWidth() const { return QFontMetrics(m_chosenFont).horizontalAdvance(text()) + 1; }

    QPainterPath outline(const QRectF &frame) const
    {
        constexpr qreal r = Metrics::kControlRadius;
        QPainterPath path;
        path.addRoundedRect(frame, r, r);
        QPainterPath corners;
        if (!m_isFirst) {
            corners.addRect(QRectF(frame.left(), frame.top(), r, frame.height()));
        }
        if (!m_isLast) {
            corners.addRect(QRectF(frame.right() - r, frame.top(), r, frame.height()));
        }
        return path.united(corners);
    }

    const Theme &m_theme;
    QFont m_chosenFont;
    bool m_isFirst = true;
    bool m_isLast = true;
};

SegmentedControl::SegmentedControl(const Theme &theme, const QString &name, const QStringList &options,
                                   QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
{
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(0);
    setOptions(options);
}

QStringList SegmentedControl::options() const
{
    QStringList options;
    for (const Segment *segment : m_segments) {
        options.append(segment->text());
    }
    return options;
}

void SegmentedControl::setOptions(const QStringList &options)
{
    if (options == this->options()) {
        return;
    }
    qDeleteAll(m_segments);
    m_segments.clear();
    for (int i = 0; i < options.size(); ++i) {
        auto *segment = new Segment(m_theme, options.at(i), this);
        segment->setEdges(i == 0, i == options.size() - 1);
        connect(segment, &QAbstractButton::clicked, this, [this, i] { setCurrent(i); });
        layout()->addWidget(segment);
        m_segments.append(segment);
    }
    m_current = -1;
    setFocusProxy(nullptr);
    setCurrent(0);
}

void SegmentedControl::setCurrent(int current)
{
    if (current < 0 || current >= m_segments.size() || current == m_current) {
        return;
    }
    QWidget *previous = m_current >= 0 ? m_segments.at(m_current) : nullptr;
    Segment *chosen = m_segments.at(current);
    m_current = current;
    chosen->setChecked(true);
    chosen->setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(chosen);
    if (previous && window()->focusWidget() == previous) {
        chosen->setFocus(Qt::OtherFocusReason);
    }
    if (previous) {
        previous->setFocusPolicy(Qt::ClickFocus); // one stop for Tab
    }
    Q_EMIT currentChanged(current);
}

void SegmentedControl::keyPressEvent(QKeyEvent *event)
{
    const int forward = layoutDirection() == Qt::LeftToRight ? 1 : -1;
    const int last = static_cast<int>(m_segments.size()) - 1;
    switch (event->key()) {
    case Qt::Key_Left:
        setCurrent(m_current - forward);
        break;
    case Qt::Key_Right:
        setCurrent(m_current + forward);
        break;
    case Qt::Key_Up:
        setCurrent(m_current - 1);
        break;
    case Qt::Key_Down:
        setCurrent(m_current + 1);
        break;
    case Qt::Key_Home:
        setCurrent(0);
        break;
    case Qt::Key_End:
        setCurrent(last);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}
