#include "rig/ScriptedServer.h"

#include "Services/Ports/OpenPorts.h"

#include <QCoroTask>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

const QByteArray kSS = "Netid State Recv-Q Send-Q Local Peer Process\ntcp LISTEN 0 1 *:80 *:* \n";
const QByteArray kNetstat = "Proto Recv-Q Send-Q Local Foreign State\ntcp 0 0 *:22 *:* LISTEN 7/sshd\n";

} // namespace

/// Which tool is asked, and whose answer counts.
class TestOpenPorts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tools_data();
    void tools();
};

void TestOpenPorts::tools_data()
{
    QTest::addColumn<CommandResult>("ss");
    QTest::addColumn<CommandResult>("netstat");
    QTest::addColumn<int>("asked");
    QTest::addColumn<QString>("port");
    const auto said = &ScriptedServer::said;
    QTest::newRow("ss") << said(kSS, 0) << said(kNetstat, 0) << 1 << u"80"_s;
    QTest::newRow("no ss") << said({}, 127) << said(kNetstat, 0) << 2 << u"22"_s;
    QTest::newRow("ss fails behind its rows") << said(kSS, 1) << said(kNetstat, 0) << 2 << u"22"_s;
    QTest::newRow("ss has its heading only") << said("Netid State\n", 0) << said(kNetstat, 0) << 2 << u"22"_s;
    QTest::newRow("blank ss") << said(" \n", 0) << said(kNetstat, 0) << 2 << u"22"_s;
    QTest::newRow("neither") << said({}, 127) << said({}, 127) << 2 << QString();
    QTest::newRow("netstat fails behind its rows") << said({}, 127) << said(kNetstat, 1) << 2 << QString();
}

void TestOpenPorts::tools()
{
    QFETCH(CommandResult, ss);
    QFETCH(CommandResult, netstat);
    QFETCH(int, asked);
    QFETCH(QString, port);
    ScriptedServer scripted;
    scripted.setAnswer([&](const QString &line) { return line.startsWith(u"ss "_s) ? ss : netstat; });
    const QList<PortInfo> ports = QCoro::waitFor(OpenPorts::getPorts(scripted.manager, ScriptedServer::server()));
    QCOMPARE(scripted.lines().size(), asked);
    QCOMPARE(scripted.lines().first(), u"ss -tulpn 2>/dev/null"_s);
    QCOMPARE(ports.size(), port.isEmpty() ? 0 : 1);
    QCOMPARE(ports.value(0).localPort, port);
}

QTEST_GUILESS_MAIN(TestOpenPorts)
#include "test_open_ports.moc"
