#include "Views/Terminal/TerminalReconnectOverlay.h"

#include "Views/Components/Labels.h"
#include "Views/Components/PlainText.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace
{

constexpr int kWidth = 340;
constexpr int kMargin = 24;
constexpr qsizetype kLongestName = 80;

const QColor &onAccentColor(const Theme &theme)
{
    return theme.tokens().onAccent;
}

} // namespace

TerminalReconnectOverlay::TerminalReconnectOverlay(const Theme &theme, QWidget *parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_text(new TextLabel(theme, TextStyle::Body, {}, TextLabel::Shade::Dim, this))
    , m_button(new QPushButton(this))
{
    auto *const title =
        new TextLabel(theme, TextStyle::Heading, tr("Connection Closed"), TextLabel::Shade::Text, this);
    setAccessibleName(title->text());
    m_text->setWordWrap(true);
    m_text->setAlignment(Qt::AlignHCenter);
    m_button->setIcon(Icons::icon(IconName::Refresh, theme, &onAccentColor));
    m_button->setAutoDefault(true);
    setButtonKind(*m_button, ButtonKind::Primary);
    connect(m_button, &QPushButton::clicked, this, &TerminalReconnectOverlay::reconnectRequested);

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    column->setSpacing(8);
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addWidget(m_text);
    column->addSpacing(8);
    column->addWidget(m_button, 0, Qt::AlignHCenter);
    setFixedWidth(kWidth);
    setFocusProxy(m_button);
    setReconnecting(false);
}

void TerminalReconnectOverlay::setServerName(const QString &name)
{
    QString line = PlainText::oneLine(name);
    if (line.size() > kLongestName) {
        line = line.left(kLongestName) + u'\u2026';
    }
    m_text->setText(tr("The SSH connection to %1 has been closed.").arg(line));
    setAccessibleDescription(m_text->text());
}

void TerminalReconnectOverlay::setReconnecting(bool isReconnecting)
{
    m_button->setText(isReconnecting ? tr("Reconnecting...") : tr("Reconnect"));
    m_button->setEnabled(!isReconnecting);
}

void TerminalReconnectOverlay::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(m_theme.tokens().raised);
    painter.setPen(m_theme.tokens().line);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Metrics::kSheetRadius,
                            Metrics::kSheetRadius);
}
