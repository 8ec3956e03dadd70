#include "Views/Components/StatePage.h"

#include "Views/Components/Labels.h"
#include "Views/Components/Motion.h"
#include "Views/Components/Spinner.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace
{

constexpr int kWidth = 440;
constexpr int kTurnMs = 1100;
constexpr int kPictureSize = 28;
constexpr int kPictureGround = 56;

} // namespace

/// A picture, a title, text, an explanation, a detail and a button, in a column in the middle.
class StateMessage : public QWidget
{
    Q_OBJECT

public:
    StateMessage(const Theme &theme, QWidget *parent)
        : QWidget(parent)
        , m_theme(theme)
        , m_column(new QWidget(this))
        , m_picture(new QWidget(m_column))
        , m_motion(new Motion(*m_picture))
        , m_title(new TextLabel(theme, TextStyle::Title, {}, TextLabel::Shade::Text, m_column))
        , m_text(new TextLabel(theme, TextStyle::Body, {}, TextLabel::Shade::Dim, m_column))
        , m_explanation(new TextLabel(theme, TextStyle::Detail, {}, TextLabel::Shade::Dim, m_column))
        , m_detail(new TextLabel(theme, TextStyle::Mono, {}, TextLabel::Shade::Dim, m_column))
        , m_button(new QPushButton(m_column))
    {
        m_picture->setFixedSize(kPictureGround, kPictureGround);
        m_picture->installEventFilter(this);
        for (TextLabel *label : {m_title, m_text, m_explanation, m_detail}) {
            label->setWordWrap(true);
            label->setAlignment(Qt::AlignHCenter);
        }
        for (QWidget *part : {static_cast<QWidget *>(m_text), static_cast<QWidget *>(m_explanation),
                              static_cast<QWidget *>(m_detail), static_cast<QWidget *>(m_button)}) {
            part->hide(); // a layout would ask for their fonts before there are words
        }
        m_explanation->setContentsMargins(0, 14, 0, 4);
        m_explanation->setSelectable();
        m_detail->setSelectable();

        auto *column = new QVBoxLayout(m_column);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        column->addWidget(m_picture, 0, Qt::AlignHCenter);
        column->addSpacing(16);
        column->addWidget(m_title);
        column->addSpacing(6);
        column->addWidget(m_text);
        column->addWidget(m_explanation);
        column->addSpacing(6);
        column->addWidget(m_detail);
        column->addSpacing(16);
        column->addWidget(m_button, 0, Qt::AlignHCenter);
        m_column->setMaximumWidth(kWidth);

        // A little above the middle is where the eye looks for it.
        auto *page = new QVBoxLayout(this);
        page->addStretch(2);
        auto *middle = new QHBoxLayout; // an alignment instead would give wrapped lines too little height
        middle->setContentsMargins(16, 0, 16, 0);
        middle->addStretch(1);
        middle->addWidget(m_column, 1000); // as wide as it may be
        middle->addStretch(1);
        page->addLayout(middle);
        page->addStretch(3);
    }

    void set(StatePage::State state, const StatePage::Message &message, const QString &buttonText)
    {
        m_state = state;
        m_current = message;
        m_title->setText(message.title);
        m_text->setText(message.text);
        m_text->setVisible(!message.text.isEmpty());
        m_explanation->setText(message.explanation);
        m_explanation->setVisible(!message.explanation.isEmpty());
        // Lists read from the left, and what belongs to one.
        m_text->setAlignment(sideOf(message.text));
        m_explanation->setAlignment(sideOf(message.explanation));
        m_detail->setAlignment(sideOf(message.explanation));
        m_detail->setText(message.detail);
        m_detail->setVisible(!message.detail.isEmpty());
        m_button->setText(buttonText);
        m_button->setVisible(!buttonText.isEmpty());
        setAccessibleName(message.title);
        m_picture->update();
        m_motion->setActive(state == StatePage::State::Loading);
    }

    StatePage::Message current() const { return m_current; }

    QPushButton &button() const { return *m_button; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched != m_picture || event->type() != QEvent::Paint) {
            return QWidget::eventFilter(watched, event);
        }
        QPainter painter(m_picture);
        painter.setRenderHint(QPainter::Antialiasing);
        if (m_state == StatePage::State::Loading) {
            Spinner::paint(painter, QRectF(m_picture->rect()).adjusted(12, 12, -12, -12), 3, m_theme.tokens().line,
                           m_theme.tokens().accent.color, m_motion->phase(kTurnMs));
            return true;
        }
        const bool isError = m_state == StatePage::State::Error;
        const Tone &tone = m_theme.tone(isError ? ToneName::Red : ToneName::Gray);
        const IconName icon = m_current.icon.value_or(isError ? IconName::Warning : IconName::Servers);
        painter.setPen(Qt::NoPen);
        painter.setBrush(tone.soft);
        painter.drawEllipse(m_picture->rect());
        const int offset = (kPictureGround - kPictureSize) / 2;
        painter.drawPixmap(offset, offset, Icons::pixmap(icon, tone.text, kPictureSize, devicePixelRatioF()));
        return true;
    }

private:
    static Qt::Alignment sideOf(const QString &text)
    {
        return text.contains(u'\n') ? Qt::AlignLeft : Qt::AlignHCenter;
    }

    const Theme &m_theme;
    QWidget *m_column;
    QWidget *m_picture;
    Motion *m_motion; // of the picture
    TextLabel *m_title;
    TextLabel *m_text;
    TextLabel *m_explanation;
    TextLabel *m_detail;
    QPushButton *m_button;
    StatePage::State m_state = StatePage::State::Empty;
    StatePage::Message m_current;
};

StatePage::StatePage(const Theme &theme, QWidget *content, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_pages(new QStackedLayout(this))
    , m_content(content)
{
    m_pages->addWidget(content);
}

StateMessage &StatePage::messagePage()
{
    if (!m_message) {
        m_message = new StateMessage(m_theme, this);
        m_pages->addWidget(m_message);
        connect(&m_message->button(), &QPushButton::clicked, this, &StatePage::retryRequested);
    }
    return *m_message;
}

void StatePage::showLoading(const Message &message)
{
    present(State::Loading, message, {});
}

void StatePage::showError(const Message &message, const QString &buttonText)
{
    present(State::Error, message, buttonText.isEmpty() ? tr("Retry") : buttonText);
}

void StatePage::showEmpty(const Message &message, const QString &buttonText)
{
    present(State::Empty, message, buttonText);
}

void StatePage::showContent()
{
    m_state = State::Content;
    if (m_message) {
        m_message->set(State::Empty, {}, {});
    }
    m_pages->setCurrentWidget(m_content);
}

void StatePage::present(State state, const Message &message, const QString &buttonText)
{
    m_state = state;
    messagePage().set(state, message, buttonText);
    m_pages->setCurrentWidget(m_message);
}

StatePage::Message StatePage::message() const
{
    return m_message ? m_message->current() : Message();
}

QPushButton &StatePage::button() const
{
    return m_message->button();
}

#include "StatePage.moc"
