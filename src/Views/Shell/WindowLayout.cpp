#include "Views/Shell/WindowLayout.h"

#include "Models/UserDefaults.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ContentViewModel.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kKey = "mainWindow"_L1; // a text with a JSON object

const QScreen *screenAround(const QRect &frame)
{
    for (const QScreen *screen : QGuiApplication::screens()) {
        if (screen->availableGeometry().contains(frame)) {
            return screen;
        }
    }
    return nullptr;
}

} // namespace

WindowLayout::WindowLayout(ContentView &window, UserDefaults &defaults)
    : QObject(&window)
    , m_window(window)
    , m_defaults(defaults)
{
    restore();
    m_place = window.geometry();
    window.installEventFilter(this);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &WindowLayout::save); // not every end closes the window
}

bool WindowLayout::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != &m_window) {
        return false;
    }
    const bool isPlaced = event->type() == QEvent::Resize || event->type() == QEvent::Move;
    constexpr auto kElsewhere = Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized;
    if (isPlaced && !(m_window.windowState() & kElsewhere)) {
        m_place = m_window.geometry();
    } else if (event->type() == QEvent::Close) {
        save();
    }
    return false;
}

void WindowLayout::restore()
{
    const QJsonObject kept = QJsonDocument::fromJson(m_defaults.text(kKey).value_or(QString()).toUtf8()).object();
    const auto number = [&](QLatin1StringView key) { return kept.value(key).toInt(); };
    const QSize size(number("width"_L1), number("height"_L1));
    const QScreen *const primary = QGuiApplication::primaryScreen();
    if (kept.isEmpty() || !primary || size.isEmpty()) {
        return;
    }
    m_window.model().setSidebarVisible(kept.value("sidebar"_L1).toBool(true));
    const QRect frame(QPoint(number("x"_L1), number("y"_L1)), size);
    if (screenAround(frame)) {
        m_window.setGeometry(frame);
    } else {
        m_window.resize(size.boundedTo(primary->availableSize()).expandedTo(m_window.minimumSize()));
    }
    if (kept.value("servers"_L1).isDouble() && kept.value("sections"_L1).isDouble()) {
        m_window.setSidebarWidths({number("servers"_L1), number("sections"_L1)});
    }
    if (kept.value("maximized"_L1).toBool()) {
        m_window.setWindowState(Qt::WindowMaximized);
    }
}

void WindowLayout::save()
{
    const QList<int> widths = m_window.sidebarWidths();
    const QJsonObject kept{{u"x"_s, m_place.x()},
                           {u"y"_s, m_place.y()},
                           {u"width"_s, m_place.width()},
                           {u"height"_s, m_place.height()},
                           {u"maximized"_s, m_window.isMaximized()},
                           {u"sidebar"_s, m_window.model().isSidebarVisible()},
                           {u"servers"_s, widths.value(0)},
                           {u"sections"_s, widths.value(1)}};
    const QString text = QString::fromUtf8(QJsonDocument(kept).toJson(QJsonDocument::Compact));
    if (m_defaults.text(kKey) != text) {
        m_defaults.setText(kKey, text);
    }
}
