#include "Views/FakeTransport.h"

#include "Services/Commands/NetworkCommands.h"
#include "Services/Commands/SystemCommands.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/CompactMetricsCard.h"
#include "Views/Components/Disclosure.h"
#include "Views/Components/KeyValueGrid.h"
#include "Views/Components/Labels.h"
#include "Views/Components/Pill.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/UsageBar.h"
#include "Views/Dashboard/CompactGPUCard.h"
#include "Views/Dashboard/DashboardContent.h"
#include "Views/Dashboard/DashboardHeader.h"
#include "Views/Dashboard/DashboardView.h"
#include "Views/Dashboard/DashboardViewModel.h"
#include "Views/Dashboard/GPUDeviceList.h"
#include "Views/Dashboard/MonitoringCards.h"
#include "Views/Dashboard/SecretForm.h"
#include "Views/Dashboard/StorageDeviceTable.h"

#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using State = StatePage::State;

namespace
{

SystemInfo facts(const QDateTime &updated)
{
    SystemInfo info{.hostname = u"web-01"_s, .cpuCount = u"8"_s, .lastUpdated = updated};
    for (const auto &[mountPoint, percent] : {std::pair{u"/var"_s, u"76%"_s}, std::pair{u"/"_s, u"31%"_s}}) {
        info.diskUsage.append({.size = u"78G"_s, .used = u"24G"_s, .usePercent = percent, .mountPoint = mountPoint});
    }
    info.storageDevices = {
        {.name = u"sda"_s, .size = u"78G"_s, .type = u"disk"_s, .mountpoints = {{}, u"/"_s, u""_s}},
        {.name = u"sr0"_s, .removable = true, .readonly = true, .type = u"rom"_s},
        {.name = u"sdb"_s, .type = u"disk"_s, .mountpoints = {u"/srv"_s, u"/mnt/<b>x"_s}}};
    return info;
}

QByteArray nvidia(int count)
{
    QByteArray lines = "MIXED_VENDOR_START\nVENDOR:NVIDIA\n";
    for (int i = 0; i < count; ++i) {
        lines += QByteArray::number(i) + ", RTX 4000, 54, " + QByteArray::number(80 + i) +
                 " %, 8192 MiB, 2048 MiB, 6144 MiB, 100.00 W, 130.00 W, 30 %, 1410 MHz, 6500 MHz\n";
    }
    return lines + "VENDOR_END\nMIXED_VENDOR_END\n";
}

} // namespace

/// The dashboard as it is laid out, on a scripted server.
class TestDashboardView : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void init() { m_transport = std::make_unique<FakeTransport>(); }

    void cleanup()
    {
        m_view.reset();
        m_model.reset();
        m_transport.reset();
    }

    void statesInTheirOrder();
    void keptFactsShowAtOnce();
    void aFailureIsPutBeforeTheOperator();
    void aFailureWaitsForItsTime();
    void aSecretIsTypedInTheAlert();
    void asksBeforeItDisconnects();
    void storageDevices();
    void endlessLists();
    void graphicsProcessors();
    void monitoring();
    void cardsFitTheWidth_data();
    void cardsFitTheWidth();

private:
    DashboardView &open(const Server &server)
    {
        m_model = std::make_unique<DashboardViewModel>(
            DashboardViewModel::Services{m_transport->manager, m_transport->store, m_transport->clock}, server);
        m_view = std::make_unique<DashboardView>(m_theme, *m_model);
        m_view->resize(880, 760);
        m_view->show();
        m_view->setActive(true);
        m_model->start();
        return *m_view;
    }

    Server addWithFacts()
    {
        Server server = m_transport->add(u"web"_s);
        server.systemInfo = facts(m_transport->clock.now());
        m_transport->store.updateServer(server);
        return server;
    }

    DashboardView &openConnected()
    {
        open(addWithFacts());
        [this] { QTRY_VERIFY(m_model->isConnected() && !m_model->isConnecting()); }();
        return *m_view;
    }

    template<typename Content>
    Content &opened(const QString &section)
    {
        Disclosure &part = m_view->content().section(section);
        if (!part.isExpanded()) {
            part.header().click();
        }
        return *qobject_cast<Content *>(part.content());
    }

    // Answers what waits until a sample is whole. On a slow machine the next one has begun by then.
    void answerSamples(const QByteArray &gpus, qint64 receivedBytes)
    {
        const qsizetype samples = m_model->metricsHistory().size();
        while (!m_transport->calls.isEmpty() && m_model->metricsHistory().size() == samples) {
            const QString line = m_transport->calls.constFirst().command;
            m_transport->answer(line == GetCPUUsageCommand().commandString() ? "37.42\n"
                                : line == GetMemoryMetricsCommand().commandString()
                                    ? "TOTAL:34359738368|USED:8589934592\n"
                                : line == GetNetworkMetricsCommand().commandString()
                                    ? "eth0|" + QByteArray::number(receivedBytes) + "|0|0|0|0|0\n"
                                : line == GetGPUMetricsCommand().commandString() ? gpus
                                                                                 : QByteArray());
            QCoreApplication::processEvents();
        }
    }

    Theme m_theme;
    std::unique_ptr<FakeTransport> m_transport;
    std::unique_ptr<DashboardViewModel> m_model;
    std::unique_ptr<DashboardView> m_view;
};

void TestDashboardView::statesInTheirOrder()
{
    m_transport->holdLogins();
    const Server server = m_transport->add(u"<i>web"_s, AuthMethod::SshAgent);
    const StatePage &page = open(server).page();
    const Pill &pill = m_view->header().state();
    QCOMPARE(page.state(), State::Loading);
    QCOMPARE(page.message().title, u"Connecting..."_s);
    QCOMPARE(page.message().text, u"Establishing connection to <i>web to view system information"_s);
    QCOMPARE(pill.text(), u"Connecting"_s);

    m_transport->letLoginsEnd();
    QTRY_COMPARE(page.message().title, u"Loading system information..."_s);
    QCOMPARE(page.message().text, u"Gathering server details via SSH..."_s);
    QCOMPARE(pill.text(), u"Connected"_s);

    m_transport->answer({}, 255, "Connection reset by peer");
    QTRY_COMPARE(m_transport->calls.size(), 1);
    m_transport->answer({}, 255);
    QTRY_COMPARE(page.state(), State::Error);
    QCOMPARE(page.message().title, u"No System Information"_s);
    QCOMPARE(page.message().text, u"Unable to retrieve system information from the server"_s);
    QCOMPARE(page.message().detail, u"Connection reset by peer"_s);
    QCOMPARE(page.button().text(), u"Retry"_s);
    page.button().click();
    QTRY_COMPARE(page.message().title, u"Loading system information..."_s);

    m_transport->store.updateServerConnection(server, false);
    QCOMPARE(page.state(), State::Empty);
    QCOMPARE(page.message().title, u"Not Connected"_s);
    QCOMPARE(page.message().text, u"Connect to <i>web to view system information"_s);
    QCOMPARE(pill.text(), u"Disconnected"_s);
    QCOMPARE(page.button().text(), u"Connect"_s);
    page.button().click();
    QCOMPARE(page.message().title, u"Connecting..."_s);
    QTRY_VERIFY(m_model->isConnected());
}

void TestDashboardView::keptFactsShowAtOnce()
{
    m_transport->holdLogins();
    const DashboardView &view = open(addWithFacts());
    QVERIFY(m_model->isConnecting());
    QCOMPARE(view.page().state(), State::Content);
    QCOMPARE(view.content().facts().rows().at(0), (std::pair{u"Hostname"_s, u"web-01"_s}));
    QCOMPARE(view.content().facts().rows().at(5), (std::pair{u"CPU Cores"_s, u"8 vCPUs"_s}));
    QCOMPARE(view.content().fileSystems().size(), 2);
    QCOMPARE(view.content().fileSystems().at(0)->accessibleName(), u"/: 24G / 78G (31%)"_s);
    QCOMPARE(view.content().fileSystems().at(1)->percent(), 76.0);

    // They stay when the attempt fails, with a word about it above them.
    m_transport->setLogin(false, "ssh: connect to host h port 22: Connection refused");
    m_transport->letLoginsEnd(); // the one that is held has read the answer before
    QTRY_VERIFY(!m_model->isConnecting());
    m_transport->store.updateServerConnection(m_model->server(), false);
    m_model->initiateConnection();
    QTRY_COMPARE(m_model->connection(), DashboardViewModel::Connection::Failed);
    QCOMPARE(view.page().state(), State::Content);
    QCOMPARE(view.content().trouble(),
             m_model->connectionErrorMessage() + u"\nssh: connect to host h port 22: Connection refused"_s);
}

void TestDashboardView::aFailureIsPutBeforeTheOperator()
{
    m_transport->setLogin(false, "ssh: connect to host h port 22: No route to host");
    open(m_transport->add(u"web"_s, AuthMethod::SshAgent));
    QTRY_VERIFY(m_view->connectionAlert());
    const AlertDialog &alert = *m_view->connectionAlert();
    QCOMPARE(alert.windowTitle(), u"Connection Failed"_s);
    QStringList texts;
    for (const QLabel *label : alert.findChildren<QLabel *>()) {
        texts.append(label->text());
        if (label->text().contains(u"No route to host"_s)) {
            QVERIFY(label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
            QVERIFY(label->textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
        }
    }
    QVERIFY(texts.contains(m_model->connectionErrorMessage()));
    QVERIFY(texts.contains(u"ssh: connect to host h port 22: No route to host"_s));
    QVERIFY(!m_view->secretForm());
    QCOMPARE(alert.buttons().size(), 1);
    QCOMPARE(alert.buttons().constFirst()->text(), u"OK"_s);
    alert.buttons().constFirst()->click();
    QVERIFY(!m_model->showingConnectionError());
    QVERIFY(!m_view->connectionAlert());
    QCOMPARE(m_view->page().message().title, u"Not Connected"_s);
    QCOMPARE(m_view->page().message().detail, u"ssh: connect to host h port 22: No route to host"_s);
    QCOMPARE(m_view->page().message().explanation, m_model->connectionErrorMessage());
    int stops = 0;
    for (const QLabel *label : m_view->page().findChildren<QLabel *>()) {
        stops += label->isVisible() && label->focusPolicy() == Qt::StrongFocus ? 1 : 0;
    }
    QCOMPARE(stops, 2); // both can be reached and copied
}

void TestDashboardView::aFailureWaitsForItsTime()
{
    m_transport->setLogin(false, "Permission denied");
    m_transport->holdLogins();
    open(m_transport->add(u"web"_s, AuthMethod::SshAgent));
    QDialog sheet(m_view.get());
    sheet.open();
    m_transport->letLoginsEnd();
    QTRY_COMPARE(m_model->connection(), DashboardViewModel::Connection::Failed);
    QVERIFY(!m_view->connectionAlert()); // the operator is typing there
    QCOMPARE(m_view->page().message().title, u"Not Connected"_s);
    m_view->setActive(false);
    sheet.close();
    QTest::qWait(20);
    QVERIFY(!m_view->connectionAlert()); // nor over another page
    m_view->setActive(true);
    QVERIFY(m_view->connectionAlert());
    m_view->connectionAlert()->reject();

    m_model->initiateConnection();
    sheet.open();
    QTRY_VERIFY(!m_model->isConnecting());
    QVERIFY(!m_view->connectionAlert());
    sheet.close();
    QTRY_VERIFY(m_view->connectionAlert());
}

void TestDashboardView::aSecretIsTypedInTheAlert()
{
    m_transport->setLogin(false, "Permission denied");
    open(m_transport->add(u"web"_s, AuthMethod::Password));
    QTRY_VERIFY(m_view->secretForm());
    for (int i = 0; i < 2; ++i) { // the second alert comes right after the first
        QLineEdit &field = m_view->secretForm()->field();
        if (i == 0) { // nobody has asked for this one
            QTest::qWait(20);
            QVERIFY(!field.hasFocus());
        } else {
            QTRY_VERIFY(field.hasFocus());
        }
        QTest::keyClicks(&field, u"wrong"_s);
        QTest::keyClick(&field, Qt::Key_Return);
        QVERIFY(m_model->isConnecting());
        QTRY_VERIFY(m_view->connectionAlert() && !m_model->isConnecting());
    }
    m_transport->setLogin(true);
    QTest::keyClicks(&m_view->secretForm()->field(), u"right"_s);
    QTest::keyClick(&m_view->secretForm()->field(), Qt::Key_Return);
    QTRY_VERIFY(m_model->isConnected());
    QVERIFY(!m_view->connectionAlert() && !m_view->secretForm());
    QCOMPARE(m_transport->logins(), 3);
}

void TestDashboardView::asksBeforeItDisconnects()
{
    openConnected();
    QSignalSpy requests(m_model.get(), &DashboardViewModel::disconnectRequested);
    QPushButton &disconnectButton = m_view->header().disconnectButton();
    QCOMPARE(disconnectButton.text(), u"Disconnect from web"_s);
    Server server = m_model->server();
    server.name = u"a & "_s + QString(200, u'w');
    m_transport->store.updateServer(server);
    QVERIFY(disconnectButton.text().startsWith(u"Disconnect from a && ww"_s) &&
            disconnectButton.sizeHint().width() < 260);
    QCOMPARE(disconnectButton.accessibleName(), u"Disconnect from "_s + server.name);
    server.name = u"web"_s;
    m_transport->store.updateServer(server);
    disconnectButton.click();
    QCOMPARE(m_view->disconnectAlert()->windowTitle(), u"Disconnect from Server"_s);
    QCOMPARE(m_view->disconnectAlert()->accessibleDescription(),
             u"Are you sure you want to disconnect from web? Any existing terminal sessions will be closed."_s);
    QTest::keyClick(m_view->disconnectAlert(), Qt::Key_Escape);
    QVERIFY(!m_view->disconnectAlert() && requests.isEmpty());

    disconnectButton.click();
    m_view->disconnectAlert()->buttons().at(1)->click();
    QCOMPARE(requests.size(), 1);

    disconnectButton.click(); // the question goes with the connection
    m_transport->store.updateServerConnection(m_model->server(), false);
    QVERIFY(!m_view->disconnectAlert());
}

void TestDashboardView::storageDevices()
{
    openConnected();
    const auto &table = opened<StorageDeviceTable>(DashboardViewModel::kStorageDevices);
    const QList<QStringList> expected{{u"sda"_s, u"78G"_s, u"disk"_s, u""_s, u"/"_s},
                                      {u"sr0"_s, u""_s, u"rom"_s, u"RO Removable"_s, u""_s},
                                      {u"sdb"_s, u""_s, u"disk"_s, u""_s, u"/srv, /mnt/<b>x"_s}};
    QCOMPARE(table.rows(), expected);

    Server server = m_model->server();
    server.systemInfo->storageDevices->removeFirst();
    m_transport->store.updateServerSystemInfo(server, *server.systemInfo);
    QCOMPARE(table.rows(), expected.sliced(1));
    server.systemInfo->storageDevices->clear();
    m_transport->store.updateServerSystemInfo(server, *server.systemInfo);
    QVERIFY(table.rows().isEmpty());
    QVERIFY(table.findChild<QLabel *>());
}

void TestDashboardView::endlessLists()
{
    openConnected();
    const auto &table = opened<StorageDeviceTable>(DashboardViewModel::kStorageDevices);
    SystemInfo info = *m_model->systemInfo();
    info.storageDevices->resize(10'000);
    info.diskUsage.resize(10'000);
    m_transport->store.updateServerSystemInfo(m_model->server(), info);
    QCOMPARE(table.rows().size(), StorageDeviceTable::kMostLines);
    QCOMPARE(m_view->content().fileSystems().size(), DashboardContent::kMostLines);
    int told = 0;
    for (const QLabel *label : m_view->findChildren<QLabel *>()) {
        told += label->isVisible() && label->text() == u"... and 9800 more"_s ? 1 : 0;
    }
    QCOMPARE(told, 2);
}

void TestDashboardView::graphicsProcessors()
{
    openConnected();
    const auto &list = opened<GPUDeviceList>(DashboardViewModel::kGPUDevices);
    QCOMPARE(list.note(), u"Detecting GPU devices..."_s);
    m_transport->answer("MIXED_VENDOR_START\nMIXED_VENDOR_END\n");
    QTRY_COMPARE(list.note(), u"No GPU devices detected"_s);

    opened<MonitoringCards>(DashboardViewModel::kMonitoring);
    answerSamples(nvidia(8), 0);
    QCOMPARE(list.count(), 8);
    QVERIFY(list.note().isEmpty());
    QStringList texts;
    for (const QLabel *label : list.findChildren<QLabel *>()) {
        texts.append(label->text());
    }
    for (const QString &text : {u"GPU 7"_s, u"RTX 4000"_s, u"87%"_s, u"2.0 of 8.0 GiB"_s,
                                u"54 °C  ·  100 / 130 W  ·  Core 1410 MHz  ·  Memory 6500 MHz  ·  Fan 30%"_s}) {
        QVERIFY2(texts.contains(text), qPrintable(text));
    }
}

void TestDashboardView::monitoring()
{
    openConnected();
    const auto &cards = opened<MonitoringCards>(DashboardViewModel::kMonitoring);
    QVERIFY(cards.isLoading());
    answerSamples(nvidia(6), 0);
    QVERIFY(!cards.isLoading());
    QCOMPARE(cards.cpu().figure(), u"37.4%"_s);
    QCOMPARE(cards.memory().figure(), u"25.0%"_s);
    QCOMPARE(cards.memory().footnote(), u"8.0 of 32.0 GiB"_s);
    QCOMPARE(cards.network().legend(), (QStringList{u"Receive 0 B/s"_s, u"Transmit 0 B/s"_s}));
    QCOMPARE(cards.diskIO().legend(), (QStringList{u"Read 0 B/s"_s, u"Write 0 B/s"_s}));
    QCOMPARE(cards.gpu().figure(), u"82.5%"_s);
    QCOMPARE(cards.gpu().legend(), (QStringList{u"GPU 0  80%"_s, u"GPU 1  81%"_s, u"GPU 2  82%"_s, u"GPU 3  83%"_s}));
    QCOMPARE(cards.gpu().footnote(), u"... and 2 more\nGPUs have similar utilization"_s);

    m_transport->clock.advance(1000);
    QTRY_VERIFY(!m_transport->calls.isEmpty());
    answerSamples(nvidia(6), 4 * 1024 * 1024);
    QCOMPARE(cards.network().legend().constFirst(), u"Receive 4.0 MB/s"_s);
    QCOMPARE(cards.network().chart().points(0), (QList<QPointF>{{58, 0}, {59, 4}}));
    QCOMPARE(cards.cpu().chart().points(0).size(), 2);
    QCOMPARE(cards.gpu().chart().points(5).size(), 2);
    QVERIFY(cards.cpu().chart().error().isEmpty());

    // A server whose processors are gone, and that answers no more.
    m_transport->clock.advance(3000);
    QTRY_VERIFY(!m_transport->calls.isEmpty());
    answerSamples("MIXED_VENDOR_START\nMIXED_VENDOR_END\n", 0);
    QCOMPARE(cards.gpu().figure(), u"0.0%"_s);
    QCOMPARE(cards.gpu().footnote(), u"No GPU devices detected"_s);

    // With another page on show samples are taken, and drawn when this one is seen again.
    m_view->setActive(false);
    m_view->hide();
    QTRY_VERIFY(!m_transport->calls.isEmpty());
    answerSamples(nvidia(6), 0);
    QCOMPARE(m_model->metricsHistory().size(), 4);
    QCOMPARE(cards.cpu().chart().points(0).size(), 3);
    m_view->show();
    QCOMPARE(cards.cpu().chart().points(0).size(), 4);
    m_view->content().section(DashboardViewModel::kMonitoring).header().click();
    QVERIFY(!m_model->isMonitoring());
}

void TestDashboardView::cardsFitTheWidth_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("besideEachOther");
    QTest::newRow("wide") << 1400 << 5;
    QTest::newRow("standard") << 880 << 2;
    QTest::newRow("narrow") << 560 << 2;
}

void TestDashboardView::cardsFitTheWidth()
{
    QFETCH(int, width);
    QFETCH(int, besideEachOther);
    openConnected();
    const auto &cards = opened<MonitoringCards>(DashboardViewModel::kMonitoring);
    answerSamples(nvidia(6), 0);
    m_view->resize(width, 760);
    QCoreApplication::processEvents();
    const QList<const CompactMetricsCard *> all{&cards.cpu(), &cards.memory(), &cards.network(), &cards.diskIO(),
                                                &cards.gpu()};
    int inTheFirstLine = 0;
    for (qsizetype i = 0; i < all.size(); ++i) {
        inTheFirstLine += all.at(i)->y() == cards.cpu().y() ? 1 : 0;
        QVERIFY(all.at(i)->geometry().right() < cards.width());
        QVERIFY(all.at(i)->chart().width() >= 100);
        for (qsizetype j = 0; j < i; ++j) {
            QVERIFY(!all.at(i)->geometry().intersects(all.at(j)->geometry()));
        }
    }
    QCOMPARE(inTheFirstLine, besideEachOther);
}

QTEST_MAIN(TestDashboardView)
#include "test_dashboard_view.moc"
