#include "App/WindowPictures.h"

#include "App/Constants.h"
#include "Models/ServerStore.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Shell/ContentView.h"
#include "Views/Theme/Theme.h"

#include <QDir>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QWindow>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kStandardSize(1280, 800);
constexpr QSize kCompactSize(1024, 700);

} // namespace

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
        takeAll();
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
        // The views learn of the change after this object may have.
        QTimer::singleShot(0, this, &WindowPictures::takeAll);
    }
}

void WindowPictures::takeAll()
{
    bool isWritten = true;
    for (const bool isDark : {false, true}) {
        isWritten = take(isDark, kStandardSize, {}) && isWritten;
        isWritten = take(isDark, kCompactSize, {}) && isWritten;
    }
    const QList<QScreen *> screens = QGuiApplication::screens();
    if (screens.size() > 1) {
        m_window.hide();
        m_window.windowHandle()->setScreen(screens.at(1));
        m_window.show();
        isWritten = take(false, kStandardSize, u"-200"_s) && isWritten;
    }
    Q_EMIT finished(isWritten ? 0 : 1);
}

bool WindowPictures::take(bool isDark, const QSize &size, const QString &suffix)
{
    m_theme.setDark(isDark);
    m_window.resize(size);
    const QString path = QDir(m_directory)
                             .filePath(u"window-%1-%2x%3%4.png"_s.arg(isDark ? u"dark"_s : u"light"_s)
                                           .arg(size.width())
                                           .arg(size.height())
                                           .arg(suffix));
    if (!m_window.grab().save(path, "PNG", 0)) {
        std::fputs(qPrintable(u"tarnwell: cannot write "_s + path + u'\n'), stderr);
        return false;
    }
    std::puts(qPrintable(path));
    return true;
}

void WindowPictures::fail(const QString &reason)
{
    m_isDone = true;
    m_timeLimit.stop();
    std::fputs(qPrintable(u"tarnwell: no pictures: "_s + reason + u'\n'), stderr);
    Q_EMIT finished(1);
}
