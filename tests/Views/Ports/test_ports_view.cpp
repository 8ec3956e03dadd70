#include "Views/LiveSection.h"
#include "Views/SectionFixture.h"

#include "Views/Components/SearchField.h"
#include "Views/Components/SectionHeader.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/Table/RowActions.h"
#include "Views/Ports/PortsView.h"
#include "Views/Ports/PortsViewModel.h"
#include "Views/Theme/Theme.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestPortsView : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void portsOfOneProcess();
    void aPortOfThisTest();
    void hosts_data();
    void hosts();

private:
    Theme m_theme;
};

void TestPortsView::portsOfOneProcess()
{
    SectionFixture fixture;
    fixture.scripted.setAnswer([](const QString &) {
        return ScriptedServer::said("tcp LISTEN 0 1 *:80 *:* users:((\"nginx\",pid=12,fd=6))\n"
                                    "tcp LISTEN 0 1 *:22 *:* users:((\"sshd\",pid=7,fd=6))\n");
    });
    PortsViewModel model(fixture.monitored(), fixture.navigation);
    PortsView view(m_theme, model);
    view.setActive(true);
    QVERIFY(view.allPortsButton().parentWidget()->isHidden());
    fixture.navigation.showPorts(12);
    QVERIFY(!view.allPortsButton().parentWidget()->isHidden());
    QCOMPARE(view.table().model()->rowCount(), 1);
    view.allPortsButton().click();
    QVERIFY(view.allPortsButton().parentWidget()->isHidden());
    QCOMPARE(view.table().model()->rowCount(), 2);
}

void TestPortsView::aPortOfThisTest()
{
    RigSshd sshd;
    QVERIFY2(sshd.up(), qPrintable(sshd.error()));
    QTcpServer listener;
    QVERIFY(listener.listen(QHostAddress::LocalHost));
    LiveSection live(sshd);
    PortsViewModel model(live.monitored(), live.navigation, std::chrono::milliseconds(200));
    PortsView view(m_theme, model);
    view.setActive(true);
    const QString port = QString::number(listener.serverPort());
    view.header().search()->setText(port);
    QTRY_COMPARE_WITH_TIMEOUT(model.filteredPorts().size(), 1, 20'000);
    const PortInfo found = model.filteredPorts().first();
    QCOMPARE(found.localAddress, u"127.0.0.1"_s);
    QCOMPARE(found.state, u"LISTEN"_s);
    QCOMPARE(found.pid, QString::number(::getpid()));

    QSignalSpy wanted(&live.navigation, &SectionNavigation::processRequested);
    view.table().rowActions().perform(0, SectionFixture::actionOf(model.table(), u"Show Process"_s));
    QCOMPARE(wanted.value(0).value(0).toLongLong(), ::getpid());
    listener.close();
    QTRY_COMPARE_WITH_TIMEOUT(view.page().state(), StatePage::State::Empty, 20'000);
    QCOMPARE(view.page().message().text, u"No ports match '%1'"_s.arg(port));
}

void TestPortsView::hosts_data()
{
    QTest::addColumn<QString>("role");
    QTest::addColumn<QString>("ports");
    QTest::newRow("systemd") << u"systemd"_s << u"22"_s;
    QTest::newRow("german") << u"german"_s << u"22"_s;
    QTest::newRow("dnf") << u"dnf"_s << u"22"_s;
    QTest::newRow("hostile") << u"hostile"_s << u"22"_s;
    QTest::newRow("busybox") << u"busybox"_s << QString(); // no ss, and a netstat that knows no processes
}

void TestPortsView::hosts()
{
    QFETCH(QString, role);
    QFETCH(QString, ports);
    const RigHosts rig;
    RIG_NEEDS_HOST(host, rig, role);
    LiveSection live(host);
    PortsViewModel model(live.monitored(), live.navigation);
    PortsView view(m_theme, model);
    view.setActive(true);
    QTRY_VERIFY_WITH_TIMEOUT(!model.isInitialLoad(), 20'000);
    QStringList listed;
    for (const PortInfo &port : model.ports()) {
        listed.append(port.localPort);
    }
    QCOMPARE(listed.contains(u"22"_s), !ports.isEmpty());
    QCOMPARE(view.page().state(), ports.isEmpty() ? StatePage::State::Empty : StatePage::State::Content);
}

QTEST_MAIN(TestPortsView)
#include "test_ports_view.moc"
