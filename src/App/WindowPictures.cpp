#include "App/WindowPictures.h"

#include "App/Constants.h"
#include "Models/ServerStore.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/Curtain.h"
#include "Views/Theme/Theme.h"

#include <QDir>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kStandardSize(1280, 800);
constexpr QSize kCompactSize(1024, 700);
constexpr int kSettleMs = Curtain::kDurationMs + 150;

} // namespace

struct WindowPictures::Picture {
    bool isDark;
    QSize size;
    int pixelRatio;

    QString fileName() const
    {
        const QString name =
            u"window-%1-%2x%3"_s.arg(isDark ? u"dark"_s : u"light"_s).arg(size.width()).arg(size.height());
        return name + (pixelRatio == 1 ? u".png"_s : u"@%1x.png"_s.arg(pixelRatio));
    }
};

const QList<WindowPictures::Picture> &WindowPictures::pictures()
{
    static const QList<Picture> all{{false, kStandardSize, 1},
                                    {false, kCompactSize, 1},
                                    {true, kStandardSize, 1},
                                    {true, kCompactSize, 1},
                                    {false, kStandardSize, 2}};
    return all;
}

WindowPictures::WindowPictures(ContentView &window, Theme &theme, ServerStore &store, const QString &directory)
    : m_window(window)
    , m_theme(theme)
    , m_store(store)
    , m_directory(directory)
{
    m_timeLimit.setSingleShot(true);
    connect(&m_timeLimit, &QTimer::timeout, this, [this] { fail(u"the server's data did not arrive in time"_s); });
}

void WindowPictures::start()
{
    if (!QDir().mkpath(m_directory)) {
        fail(u"cannot make the folder "_s + m_directory);
        return;
    }
    if (m_store.servers().isEmpty()) {
        prepareNext();
        return;
    }
    m_timeLimit.start(Constants::kPictureTimeLimitMs);
    m_store.setSelectedServer(m_store.servers().constFirst());
    connect(m_window.dashboardModel(), &DashboardViewModel::changed, this, &WindowPictures::check);
    check();
}

void WindowPictures::check()
{
    const DashboardViewModel &model = *m_window.dashboardModel();
    if (m_isDone || model.isRefreshing()) {
        return;
    }
    if (model.connection() == DashboardViewModel::Connection::Failed) {
        fail(model.connectionErrorMessage());
    } else if (model.refreshError()) {
        fail(u"the server did not tell its system information: "_s + *model.refreshError());
    } else if (model.connection() == DashboardViewModel::Connection::Connected && model.systemInfo()) {
        m_isDone = true;
        m_timeLimit.stop();
        prepareNext();
    }
}

void WindowPictures::prepareNext()
{
    if (m_next == pictures().size()) {
        Q_EMIT finished(m_isWritten ? 0 : 1);
        return;
    }
    const Picture &picture = pictures().at(m_next);
    showOnScreen(picture.pixelRatio);
    m_theme.setDark(picture.isDark);
    m_window.resize(picture.size);
    // The window takes its new palette and layout in turns of the event loop.
    QTimer::singleShot(kSettleMs, this, &WindowPictures::takeNext);
}

void WindowPictures::takeNext()
{
    const QString path = QDir(m_directory).filePath(pictures().at(m_next++).fileName());
    if (m_window.grab().save(path, "PNG", 0)) {
        std::puts(qPrintable(path));
    } else {
        m_isWritten = false;
        std::fputs(qPrintable(u"tarnwell: cannot write "_s + path + u'\n'), stderr);
    }
    prepareNext();
}

void WindowPictures::showOnScreen(int pixelRatio)
{
    for (QScreen *screen : QGuiApplication::screens()) {
        if (qFuzzyCompare(screen->devicePixelRatio(), pixelRatio) && screen != m_window.screen()) {
            m_window.hide();
            m_window.setScreen(screen);
            m_window.move(screen->geometry().topLeft());
            m_window.show();
            return;
        }
    }
}

void WindowPictures::fail(const QString &reason)
{
    m_isDone = true;
    m_timeLimit.stop();
    std::fputs(qPrintable(u"tarnwell: no pictures: "_s + reason + u'\n'), stderr);
    Q_EMIT finished(1);
}
