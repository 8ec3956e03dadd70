#include "Views/Dashboard/DashboardHeader.h"

#include "Views/Components/Labels.h"
#include "Views/Components/Pill.h"
#include "Views/Components/PlainText.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/TarnwellStyle.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kWidestDisconnect = 190; // of its text

const QColor &dangerColor(const Theme &theme)
{
    return theme.tokens().red.text;
}

const QColor &onAccentColor(const Theme &theme)
{
    return theme.tokens().onAccent;
}

QString addressLine(const Server &server)
{
    QString line = u"%1@%2:%3"_s.arg(server.username, server.host, QString::number(server.port));
    if (server.lastConnected) {
        const QString when = QLocale().toString(server.lastConnected->toLocalTime(), u"d MMM yyyy, HH:mm"_s);
        line += u"  ·  "_s + DashboardHeader::tr("Last connected: %1").arg(when);
    }
    return line;
}

} // namespace

DashboardHeader::DashboardHeader(const Theme &theme, DashboardViewModel &model, QWidget *parent)
    : Panel(theme, &Tokens::surface, Qt::BottomEdge, parent)
    , m_model(model)
    , m_name(new ElidedLabel(theme, TextStyle::Title, TextLabel::Shade::Text, Qt::ElideRight, this))
    , m_address(new ElidedLabel(theme, TextStyle::Detail, TextLabel::Shade::Dim, Qt::ElideRight, this))
    , m_state(new Pill(theme, Pill::Dot::With, this))
{
    auto *first = new QHBoxLayout;
    first->setSpacing(12);
    first->addWidget(m_name);
    first->addWidget(m_state);
    first->addStretch(1);
    auto *words = new QVBoxLayout;
    words->setSpacing(3);
    words->addLayout(first);
    words->addWidget(m_address);

    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(Metrics::kPageMargin, 14, Metrics::kPageMargin, 13);
    line->setSpacing(12);
    line->addLayout(words, 1);
    m_refresh = addButton(*line, tr("Refresh"));
    m_refresh->setIcon(Icons::icon(IconName::Refresh, theme));
    m_connect = addButton(*line, tr("Connect"));
    setButtonKind(*m_connect, ButtonKind::Primary);
    m_connect->setIcon(Icons::icon(IconName::Plug, theme, &onAccentColor));
    m_disconnect = addButton(*line, {});
    setButtonKind(*m_disconnect, ButtonKind::Danger);
    m_disconnect->setIcon(Icons::icon(IconName::Plug, theme, &dangerColor));

    connect(m_refresh, &QPushButton::clicked, &model, &DashboardViewModel::refreshSystemInfo);
    connect(m_connect, &QPushButton::clicked, &model, [&model] { model.initiateConnection(); });
    connect(m_disconnect, &QPushButton::clicked, &model, [&model] { model.setShowingDisconnectAlert(true); });
    connect(&model, &DashboardViewModel::changed, this, &DashboardHeader::update);
    update();
}

QPushButton *DashboardHeader::addButton(QHBoxLayout &line, const QString &text)
{
    auto *button = new QPushButton(text, this);
    button->setFont(m_address->font());
    line.addWidget(button);
    return button;
}

void DashboardHeader::update()
{
    const Server &server = m_model.server();
    m_name->setFullText(server.name);
    m_address->setFullText(addressLine(server));
    const bool isConnected = m_model.isConnected();
    if (isConnected) {
        m_state->setState(tr("Connected"), ToneName::Green);
    } else if (m_model.isConnecting()) {
        m_state->setState(tr("Connecting"), ToneName::Orange);
    } else {
        m_state->setState(tr("Disconnected"), ToneName::Gray);
    }
    m_refresh->setEnabled(isConnected);
    m_connect->setEnabled(!m_model.isConnecting());
    m_connect->setVisible(!isConnected);
    m_disconnect->setVisible(isConnected);
    const QString disconnectFrom = tr("Disconnect from %1").arg(server.name);
    const QString shown =
        m_disconnect->fontMetrics().elidedText(PlainText::oneLine(disconnectFrom), Qt::ElideRight, kWidestDisconnect);
    m_disconnect->setText(PlainText::withoutMnemonic(shown));
    m_disconnect->setAccessibleName(disconnectFrom);
    PlainText::setToolTip(*m_disconnect, disconnectFrom);
}
