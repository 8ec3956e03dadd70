#include "Views/Shell/ServerMenuButton.h"

#include "Models/ServerStore.h"
#include "Views/Components/Pill.h"
#include "Views/Components/PlainText.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/ServerBrowser.h"
#include "Views/Shell/ServerPopup.h"
#include "Views/Shell/ServerRowDelegate.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/LineText.h"
#include "Views/Theme/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionButton>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPadding = 12;
constexpr int kGap = 7;
constexpr int kChevron = 10;
constexpr int kGreatestWidth = 220;
constexpr int kLeastWidth = 90;

} // namespace

ServerMenuButton::ServerMenuButton(const Theme &theme, ServerStore &store, ContentViewModel &model, QWidget *parent)
    : QPushButton(parent)
    , m_theme(theme)
    , m_store(store)
    , m_model(model)
{
    setFont(theme.font(TextStyle::Detail));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(this, &QPushButton::clicked, this, &ServerMenuButton::openList);
    connect(&store, &ServerStore::selectedServerChanged, this, &ServerMenuButton::update);
    connect(&model, &ContentViewModel::isConnectingChanged, this, &ServerMenuButton::followConnecting);
    update();
}

QString ServerMenuButton::name() const
{
    const auto &server = m_store.selectedServer();
    return server ? PlainText::oneLine(server->name) : tr("Select Server");
}

void ServerMenuButton::update()
{
    const auto &server = m_store.selectedServer();
    setAccessibleName(server ? tr("Server: %1, %2").arg(name(), ServerListModel::stateText(stateOf(*server)))
                             : name());
    PlainText::setToolTip(*this, name());
    updateGeometry();
    QPushButton::update();
}

ServerListModel::State ServerMenuButton::stateOf(const Server &server) const
{
    return ServerListModel::stateOf(server, m_model.isConnecting(server.id));
}

void ServerMenuButton::followConnecting(const QUuid &server)
{
    if (m_popup) {
        m_popup->browser().model().setConnecting(server, m_model.isConnecting(server));
    }
    update();
}

void ServerMenuButton::openList()
{
    if (m_popup && m_popup->isVisible()) {
        return;
    }
    m_popup = new ServerPopup(m_theme, m_store, this);
    for (const Server &server : m_store.servers()) {
        if (m_model.isConnecting(server.id)) {
            followConnecting(server.id);
        }
    }
    connect(m_popup, &ServerPopup::addServerRequested, &m_model, [this] { m_model.setShowingAddServer(true); });
    connect(m_popup, &ServerPopup::menuRequested, this, &ServerMenuButton::menuRequested);
    m_popup->openBelow(*this);
}

ServerPopup *ServerMenuButton::popup() const
{
    return m_popup;
}

void ServerMenuButton::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Down:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        openList();
        return;
    default:
        QPushButton::keyPressEvent(event);
    }
}

QSize ServerMenuButton::sizeHint() const
{
    const int width =
        2 * kPadding + StateDot::kDiameter + 2 * kGap + kChevron + fontMetrics().horizontalAdvance(name()) + 1;
    return {std::min(width, kGreatestWidth), Metrics::kControlHeight};
}

QSize ServerMenuButton::minimumSizeHint() const
{
    return {std::min(sizeHint().width(), kLeastWidth), Metrics::kControlHeight};
}

void ServerMenuButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QStyleOptionButton option;
    initStyleOption(&option);
    style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);

    const Tokens &t = m_theme.tokens();
    QRect inside = rect().adjusted(kPadding, 0, -kPadding, 0);
    const auto &server = m_store.selectedServer();
    if (server) {
        StateDot::paint(painter, {inside.left() + StateDot::kDiameter / 2.0, inside.center().y() + 0.5},
                        ServerRowDelegate::dotColor(m_theme, stateOf(*server)));
        inside.adjust(StateDot::kDiameter + kGap, 0, 0, 0);
    }
    painter.drawPixmap(inside.right() + 1 - kChevron, inside.center().y() + 1 - kChevron / 2,
                       Icons::pixmap(IconName::ChevronDown, t.dim, kChevron, devicePixelRatioF()));
    inside.adjust(0, 0, -kChevron - kGap, 0);
    painter.setPen(t.text);
    LineText(name(), font()).paint(painter, inside);
}
