#include "Views/Components/Disclosure.h"

#include "Views/Components/Card.h"
#include "Views/Components/Labels.h"
#include "Views/Components/Pill.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace
{

constexpr int kHeaderHeight = 38;
constexpr int kBareHeaderHeight = 28;
constexpr int kArrowRoom = 14;
constexpr int kMargin = 16;
constexpr qreal kArrow = 3.5; // half of its longer side

} // namespace

/// The title's line, all of it one button.
class DisclosureHeader : public QPushButton
{
    Q_OBJECT

public:
    DisclosureHeader(const Theme &theme, const QString &title, int margin, QWidget *parent)
        : QPushButton(parent)
        , m_theme(theme)
        , m_margin(margin)
        , m_count(new Pill(theme, Pill::Dot::Without, this))
        , m_note(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, this))
    {
        setAccessibleName(title);
        setCursor(Qt::PointingHandCursor);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        auto *line = new QHBoxLayout(this);
        line->setContentsMargins(margin + kArrowRoom, 0, margin, 0);
        line->setSpacing(8);
        auto *words = new TextLabel(theme, TextStyle::Emphasis, title, TextLabel::Shade::Text, this);
        for (QWidget *part :
             {static_cast<QWidget *>(words), static_cast<QWidget *>(m_count), static_cast<QWidget *>(m_note)}) {
            part->setAttribute(Qt::WA_TransparentForMouseEvents);
            line->addWidget(part);
        }
        line->addStretch();
        m_count->hide();
        m_note->hide();
    }

    void setCount(qsizetype count)
    {
        m_count->setState(QString::number(count), ToneName::Gray);
        m_count->setVisible(count >= 0);
    }

    void setNote(const QString &note)
    {
        m_note->setText(note);
        m_note->setVisible(!note.isEmpty());
    }

    void setOpen(bool isOpen)
    {
        m_isOpen = isOpen;
        setAccessibleDescription(isOpen ? tr("Expanded") : tr("Collapsed"));
        update();
    }

    QSize sizeHint() const override
    {
        return {layout()->sizeHint().width(), m_margin == kMargin ? kHeaderHeight : kBareHeaderHeight};
    }

    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(underMouse() ? m_theme.tokens().text : m_theme.tokens().dim);
        painter.save();
        painter.translate(m_margin + kArrow, height() / 2.0);
        painter.rotate(m_isOpen ? 90 : 0);
        const QPointF arrow[]{{-kArrow * 0.7, -kArrow}, {kArrow, 0}, {-kArrow * 0.7, kArrow}};
        painter.drawPolygon(arrow, 3);
        painter.restore();
        if (hasFocus()) {
            TarnwellStyle::drawFocusRing(painter, QRectF(rect()), Metrics::kControlRadius,
                                         m_theme.tokens().accent.color);
        }
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            click();
        } else {
            QPushButton::keyPressEvent(event);
        }
    }

private:
    const Theme &m_theme;
    int m_margin;
    bool m_isOpen = false;
    Pill *m_count;
    TextLabel *m_note;
};

Disclosure::Disclosure(const Theme &theme, const QString &title, Frame frame, MakeContent makeContent,
                       QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_frame(frame)
    , m_makeContent(std::move(makeContent))
    , m_header(new DisclosureHeader(theme, title, frame == Frame::Card ? kMargin : Card::kShadow, this))
    , m_column(new QVBoxLayout(this))
{
    const int edge = frame == Frame::Card ? Card::kShadow : 0;
    m_column->setContentsMargins(edge, edge, edge, edge);
    m_column->setSpacing(0);
    m_column->addWidget(m_header);
    m_header->setOpen(false);
    connect(m_header, &QPushButton::clicked, this, [this] { Q_EMIT toggleRequested(!m_isExpanded); });
}

void Disclosure::setCount(qsizetype count)
{
    m_header->setCount(count);
}

void Disclosure::setNote(const QString &note)
{
    m_header->setNote(note);
}

void Disclosure::setExpanded(bool isExpanded)
{
    if (std::exchange(m_isExpanded, isExpanded) == isExpanded) {
        return;
    }
    if (isExpanded && !m_content) {
        m_content = m_makeContent(this);
        const int side = m_frame == Frame::Card ? kMargin : 0;
        m_column->addSpacing(m_frame == Frame::Card ? 0 : 4);
        auto *inset = new QHBoxLayout;
        inset->setContentsMargins(side, 0, side, side);
        inset->addWidget(m_content);
        m_column->addLayout(inset);
    }
    if (m_content) {
        m_content->setVisible(isExpanded);
    }
    m_header->setOpen(isExpanded);
}

QPushButton &Disclosure::header() const
{
    return *m_header;
}

void Disclosure::paintEvent(QPaintEvent *)
{
    if (m_frame == Frame::Card) {
        QPainter painter(this);
        Card::paintSurface(painter, rect(), m_theme);
    }
}

#include "Disclosure.moc"
