#include "Views/Components/Sheet.h"

#include "Views/Components/Labels.h"
#include "Views/Components/ProgressLine.h"
#include "Views/Theme/Theme.h"

#include <QEvent>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace
{

constexpr int kSideMargin = 24;
constexpr int kLeastBodyHeight = 120;

/// A line across the sheet, inside of its border.
class Separator : public QWidget
{
public:
    Separator(const Theme &theme, QWidget *parent)
        : QWidget(parent)
        , m_theme(theme)
    {
        setFixedHeight(1);
    }

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), m_theme.tokens().line); }

private:
    const Theme &m_theme;
};

} // namespace

Sheet::Sheet(const Theme &theme, const QString &title, QWidget *parent, int width)
    : ModalWindow(theme, title, parent)
    , m_width(width)
    , m_title(new QWidget(this))
    , m_progress(new ProgressLine(theme, this))
    , m_area(new QScrollArea(this))
    , m_footerLine(new Separator(theme, this))
    , m_footer(new QWidget(this))
    , m_left(new QHBoxLayout)
    , m_right(new QHBoxLayout)
{
    auto *titleLine = new QHBoxLayout(m_title);
    titleLine->setContentsMargins(20, 14, 20, 12);
    auto *words = new ElidedLabel(theme, TextStyle::Heading, TextLabel::Shade::Text, Qt::ElideRight, m_title);
    words->setFullText(title);
    titleLine->addWidget(words);

    auto *content = new QWidget;
    m_body = new QVBoxLayout(content);
    m_body->setContentsMargins(kSideMargin, 14, kSideMargin, 16);
    m_body->setSpacing(10);
    m_area->setWidget(content);
    content->setAutoFillBackground(false); // which setWidget() turned on
    m_area->setWidgetResizable(true);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_area->viewport()->setAutoFillBackground(false);
    content->installEventFilter(this);

    m_left->setSpacing(8);
    m_right->setSpacing(8);
    auto *buttons = new QHBoxLayout(m_footer);
    buttons->setContentsMargins(kSideMargin, 12, kSideMargin, 16);
    buttons->setSpacing(8);
    buttons->addLayout(m_left);
    buttons->addStretch();
    buttons->addLayout(m_right);
    m_footerLine->hide();
    m_footer->hide();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(1, 1, 1, 1); // the border
    column->setSpacing(0);
    column->addWidget(m_title);
    column->addWidget(new Separator(theme, this));
    column->addWidget(m_progress);
    column->addWidget(m_area, 1);
    column->addWidget(m_footerLine);
    column->addWidget(m_footer);
}

QPushButton *Sheet::addButton(const QString &text, Side side, ButtonKind kind)
{
    auto *button = new QPushButton(text, m_footer);
    setButtonKind(*button, kind);
    button->setAutoDefault(false);
    (side == Side::Left ? m_left : m_right)->addWidget(button);
    m_footerLine->show();
    m_footer->show();
    return button;
}

void Sheet::setDefaultButton(QPushButton *button)
{
    button->setDefault(true);
    m_default = button;
}

void Sheet::setBusy(bool isBusy)
{
    m_progress->setActive(isBusy);
}

void Sheet::setLocked(bool isLocked)
{
    QWidget *content = m_area->widget();
    if (isLocked && content->isEnabled()) {
        m_focusBefore = focusWidget();
        if (m_default) {
            m_default->setFocus(Qt::OtherFocusReason);
        }
        content->setEnabled(false);
    } else if (!isLocked && !content->isEnabled()) {
        content->setEnabled(true);
        if (m_focusBefore) {
            m_focusBefore->setFocus(Qt::OtherFocusReason);
        }
    }
}

void Sheet::reveal(QWidget *widget)
{
    m_area->ensureWidgetVisible(widget, 0, kSideMargin);
}

QSize Sheet::sizeHint() const
{
    const QLayout &body = *m_area->widget()->layout();
    const int inside = m_width - 2;
    const int bodyHeight =
        body.hasHeightForWidth() ? body.totalHeightForWidth(inside) : body.totalSizeHint().height();
    const int most = std::max(heightLimit() - heightAround(), kLeastBodyHeight);
    return {m_width, heightAround() + std::min(bodyHeight, most)};
}

QSize Sheet::minimumSizeHint() const
{
    return {m_width, heightAround() + kLeastBodyHeight};
}

int Sheet::heightAround() const
{
    const int footer = m_footer->isHidden() ? 0 : m_footer->sizeHint().height() + m_footerLine->height();
    return 2 + m_title->sizeHint().height() + 1 + m_progress->height() + footer;
}

bool Sheet::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_area->widget() && event->type() == QEvent::LayoutRequest && isVisible()) {
        // The request reaches the body before the body's own layout has answered it.
        QMetaObject::invokeMethod(this, &Sheet::fitToContent, Qt::QueuedConnection);
    }
    return ModalWindow::eventFilter(watched, event);
}

void Sheet::showEvent(QShowEvent *event)
{
    ModalWindow::showEvent(event);
    // Without a word from the sheet's owner the first field has the keyboard, not the first button.
    const QWidget *content = m_area->widget();
    if (focusWidget() && content->isAncestorOf(focusWidget())) {
        return;
    }
    for (QWidget *next = nextInFocusChain(); next != this; next = next->nextInFocusChain()) {
        if ((next->focusPolicy() & Qt::TabFocus) && content->isAncestorOf(next) && next->isVisibleTo(this) &&
            next->isEnabled()) {
            next->setFocus(Qt::OtherFocusReason);
            return;
        }
    }
}
