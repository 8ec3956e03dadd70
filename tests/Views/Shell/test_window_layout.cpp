#include "Views/FakeTransport.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/WindowLayout.h"
#include "Views/Theme/Theme.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

using namespace Qt::StringLiterals;

/// What the window remembers of its last run. The screen has 800 by 800 pixels here.
class TestWindowLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        m_theme.install();
        QCOMPARE(QGuiApplication::primaryScreen()->availableGeometry(), QRect(0, 0, 800, 800));
    }

    void init() { m_transport = std::make_unique<FakeTransport>(); }

    void isKept();
    void theMaximizedWindowKeepsItsOtherSize();
    void placesOutsideOfTheScreen_data();
    void placesOutsideOfTheScreen();
    void nonsense_data();
    void nonsense();

private:
    std::unique_ptr<ContentView> open()
    {
        auto window = std::make_unique<ContentView>(
            m_theme, ContentView::Services{m_transport->store, m_transport->manager, m_transport->clock});
        new WindowLayout(*window, m_transport->defaults);
        return window;
    }

    Theme m_theme;
    std::unique_ptr<FakeTransport> m_transport;
};

void TestWindowLayout::isKept()
{
    auto window = open();
    QCOMPARE(window->size(), ContentView::kDefaultSize);
    window->show();
    window->setGeometry(10, 40, 780, 600);
    window->setSidebarWidths({250, 140});
    window->model().setSidebarVisible(false);
    QVERIFY(!m_transport->defaults.contains(u"mainWindow"_s));
    window->close();
    window = open();
    QCOMPARE(window->geometry(), QRect(10, 40, 780, 600));
    QCOMPARE(window->sidebarWidths(), (QList<int>{250, 140}));
    QVERIFY(!window->model().isSidebarVisible());
}

void TestWindowLayout::theMaximizedWindowKeepsItsOtherSize()
{
    auto window = open();
    window->show();
    window->setGeometry(10, 20, 780, 610);
    window->showMaximized();
    window->close();
    window = open();
    QVERIFY(window->isMaximized());
    QCOMPARE(window->size(), QSize(780, 610)); // before it is shown, and when it is that no more
}

void TestWindowLayout::placesOutsideOfTheScreen_data()
{
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QSize>("size");
    QTest::newRow("beside") << u"{\"x\":5000,\"y\":20,\"width\":760,\"height\":600}"_s << QSize(760, 600);
    QTest::newRow("over the edge") << u"{\"x\":100,\"y\":20,\"width\":760,\"height\":600}"_s << QSize(760, 600);
    QTest::newRow("too large") << u"{\"x\":0,\"y\":0,\"width\":3000,\"height\":600}"_s << QSize(800, 600);
}

void TestWindowLayout::placesOutsideOfTheScreen()
{
    QFETCH(QString, kept);
    QFETCH(QSize, size);
    m_transport->defaults.setText(u"mainWindow"_s, kept);
    const QPoint place = ContentView(m_theme, {m_transport->store, m_transport->manager, m_transport->clock}).pos();
    const auto window = open();
    QCOMPARE(window->size(), size);
    QCOMPARE(window->pos(), place); // the desktop finds one
    QVERIFY(window->model().isSidebarVisible());
}

void TestWindowLayout::nonsense_data()
{
    QTest::addColumn<QString>("kept");
    QTest::newRow("no text") << QString();
    QTest::newRow("no object") << u"[1,2]"_s;
    QTest::newRow("no size") << u"{\"x\":1,\"y\":2,\"sidebar\":false}"_s;
    QTest::newRow("other types") << u"{\"width\":\"wide\",\"height\":true}"_s;
    QTest::newRow("out of range") << u"{\"width\":-5,\"height\":1e30}"_s;
}

void TestWindowLayout::nonsense()
{
    QFETCH(QString, kept);
    m_transport->defaults.setText(u"mainWindow"_s, kept);
    const auto window = open();
    QCOMPARE(window->size(), ContentView::kDefaultSize);
    QVERIFY(window->model().isSidebarVisible());
    m_transport->defaults.setText(u"mainWindow"_s,
                                  u"{\"width\":760,\"height\":600,\"servers\":-7,\"sections\":100000}"_s);
    const auto narrow = open();
    QVERIFY(narrow->sidebarWidths().at(0) > 100 && narrow->sidebarWidths().at(1) <= 600);
}

QTEST_MAIN(TestWindowLayout)
#include "test_window_layout.moc"
