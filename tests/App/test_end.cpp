#include "App/TarnwellApp.h"
#include "App/UnixSignals.h"
#include "Models/UserDefaults.h"
#include "Services/SSH/RuntimeDirectory.h"
#include "Views/Shell/AddEditServerView.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ServerListView.h"

#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <csignal>

using namespace Qt::StringLiterals;

/// The end of the program by a signal from outside.
class TestEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unsavedChangesDoNotStopIt();
};

void TestEnd::unsavedChangesDoNotStopIt()
{
    const QTemporaryDir home;
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + home.filePath(u"no-bus"_s).toUtf8());
    CommandLine line;
    line.profileDirectory = home.filePath(u"profile"_s);
    RuntimeDirectory runtimeDirectory(home.filePath(u"run"_s));
    {
        const UnixSignals signals;
        TarnwellApp app(line, runtimeDirectory);
        connect(&signals, &UnixSignals::endRequested, &app, &TarnwellApp::end);
        app.start();
        app.window().resize(1111, 777);
        app.window().serverList().addServer();
        AddEditServerView *editor = app.window().serverList().editor();
        QVERIFY(editor);
        editor->findChild<QLineEdit *>()->setText(u"typed"_s);
        editor->reject();
        QVERIFY(editor->isVisible()); // it asks first
        QTimer::singleShot(0, qApp, [] { std::raise(SIGTERM); });
        QTimer::singleShot(20'000, qApp, [] { QCoreApplication::exit(3); });
        QCOMPARE(QCoreApplication::exec(), 0);
    }
    QVERIFY(UserDefaults(line.profileDirectory).text(u"mainWindow"_s)->contains(u"1111"_s));
}

QTEST_MAIN(TestEnd)
#include "test_end.moc"
