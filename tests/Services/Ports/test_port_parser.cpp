#include "Services/Parsers/Recorded.h"

#include "Services/Ports/PortParser.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

// What a test compares of a socket, in one text: "tcp LISTEN 0.0.0.0|22 *|* 109/sshd".
QString told(const PortInfo &port)
{
    return u"%1 %2 %3|%4 %5|%6 %7/%8"_s.arg(port.protocolType, port.state, port.localAddress, port.localPort,
                                            port.foreignAddress, port.foreignPort, port.pid, port.processName);
}

QStringList told(const QList<PortInfo> &ports)
{
    QStringList lines;
    for (const PortInfo &port : ports) {
        lines.append(told(port));
    }
    return lines;
}

} // namespace

class TestPortParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordedLists();
    void addresses_data();
    void addresses();
    void aLine_data();
    void aLine();
    void twentyThousand();
    void hostileSizes();
};

void TestPortParser::recordedLists()
{
    const QList<PortInfo> ss = PortParser::parsePorts(recorded("ss_debian.txt"), true);
    QCOMPARE(ss.size(), 9);
    QCOMPARE(told(ss[0]), u"udp UNCONN 0.0.0.0|5353 0.0.0.0|* 72/socat"_s);
    QCOMPARE(told(ss[6]), u"tcp LISTEN *|8080 *|* 73/busybox"_s);
    QCOMPARE(told(ss[7]), u"tcp LISTEN ::|22 ::|* 109/sshd"_s);

    // Seen by an account that may not look at processes; a greeting stands before it.
    const QList<PortInfo> german = PortParser::parsePorts(recorded("ss_german.txt"), true);
    QCOMPARE(german.size(), 9);
    QCOMPARE(told(german[1]), u"tcp LISTEN 127.0.0.1|7070 0.0.0.0|* /"_s);

    const QList<PortInfo> netstat = PortParser::parsePorts(recorded("netstat_debian.txt"), false);
    QCOMPARE(netstat.size(), 9);
    QCOMPARE(told(netstat[2]), u"tcp LISTEN 0.0.0.0|22 0.0.0.0|* 109/sshd:"_s);
    QCOMPARE(told(netstat[4]), u"tcp6 LISTEN ::|8090 ::|* 353/docker-proxy"_s);
    QCOMPARE(told(netstat[8]), u"udp 72/socat 0.0.0.0|5353 0.0.0.0|* /"_s); // the state's column is the process's
}

void TestPortParser::addresses_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("port");
    const auto row = [](const char *text, const char *ip, const char *port) {
        QTest::newRow(text) << QByteArray(text) << QString::fromUtf8(ip) << QString::fromUtf8(port);
    };
    row("*", "*", "*");
    row("*:*", "*", "*");
    row("*:68", "*", "68");
    row("0.0.0.0:22", "0.0.0.0", "22");
    row("[::]:22", "::", "22");
    row(":::22", "::", "22");
    row("::1:631", "::1", "631");
    row("::ffff:10.0.0.1:443", "::ffff:10.0.0.1", "443");
    row("127.0.0.53%lo:53", "127.0.0.53", "53");
    row("[fe80::1]%eth0:546", "fe80::1", "546");
    row("fe80::1%eth0:546", "fe80::1", "546");
    row("10.0.0.1%eth0", "10.0.0.1", "");
    row("[::1]", "::1", "");
    row("[", "", "");
    row("[::1", "::1", "");
    row("localhost", "localhost", "");
    row("", "", "");
    row(":", "", "");
    row("%", "", "");
}

void TestPortParser::addresses()
{
    QFETCH(QByteArray, text);
    const PortParser::Address address = PortParser::parseSSAddress(text);
    QTEST(address.ip, "ip");
    QTEST(address.port, "port");
}

void TestPortParser::aLine_data()
{
    QTest::addColumn<bool>("isSS");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("expected");
    const auto ss = [](const char *name, const char *line, const QString &expected) {
        QTest::newRow(name) << true << QByteArray(line) << expected;
    };
    const auto netstat = [](const char *name, const char *line, const QString &expected) {
        QTest::newRow(name) << false << QByteArray(line) << expected;
    };
    ss("five columns", "tcp LISTEN 128 *:22 *:*", u"tcp LISTEN *|22 *|* /"_s);
    ss("two of nginx",
       "tcp LISTEN 0 511 0.0.0.0:80 0.0.0.0:* users:((\"nginx\",pid=12,fd=6),(\"nginx\",pid=13,fd=6))",
       u"tcp LISTEN 0.0.0.0|80 0.0.0.0|* 12/nginx"_s);
    ss("a name with blanks and a tab before it",
       "tcp LISTEN 0 1 *:80 *:* \tusers:((\"tmux:   server\",pid=12,fd=6))\r",
       u"tcp LISTEN *|80 *|* 12/tmux: server"_s);
    ss("a name of any bytes", "tcp LISTEN 0 1 *:80 *:* users:((\"<b>\xff\xc3\xbc\",pid=12,fd=6))",
       u"tcp LISTEN *|80 *|* 12/<b>\ufffdü"_s);
    ss("of an old ss", "tcp LISTEN 0 1 *:80 *:* users:((name=sshd,pid=7,fd=3))", u"tcp LISTEN *|80 *|* 7/sshd"_s);
    ss("an older one, without a key", "tcp LISTEN 0 1 *:80 *:* users:((\"sshd\",7,3))", u"tcp LISTEN *|80 *|* /"_s);
    ss("pid alone", "tcp LISTEN 0 1 *:80 *:* pid=x,pid=7", u"tcp LISTEN *|80 *|* 7/"_s);
    ss("as netstat has it", "tcp LISTEN 0 1 *:80 *:* 7/sshd", u"tcp LISTEN *|80 *|* 7/sshd"_s);
    ss("dash", "tcp LISTEN 0 1 *:80 *:* -", u"tcp LISTEN *|80 *|* /"_s);
    ss("four columns", "tcp LISTEN 0 *:80", {});
    ss("heading", "Netid State Recv-Q Send-Q Local Address:Port", {});
    ss("heading of one protocol", "State Recv-Q Send-Q Local Address:Port Peer", {});
    netstat("busybox", "tcp        0      0 0.0.0.0:22   0.0.0.0:*   LISTEN   1/sshd [listener] 0 of 10",
            u"tcp LISTEN 0.0.0.0|22 0.0.0.0|* 1/sshd"_s);
    netstat("no right to see it", "tcp6 0 0 :::22 :::* LISTEN -", u"tcp6 LISTEN ::|22 ::|* /"_s);
    netstat("no process column", "tcp6 0 0 :::22 :::* LISTEN", u"tcp6 LISTEN ::|22 ::|* /"_s);
    netstat("a path", "tcp 0 0 *:22 *:* LISTEN 7/usr/bin", u"tcp LISTEN *|22 *|* 7/usr"_s);
    netstat("five columns", "udp 0 0 *:68 *:*", {});
    netstat("heading", "Active Internet connections (only servers) x", {});
    netstat("heading of columns", "Proto Recv-Q Send-Q Local Address Foreign Address State", {});
    netstat("German heading", "Aktive Internetverbindungen (Nur Server)", {});
}

void TestPortParser::aLine()
{
    QFETCH(bool, isSS);
    QFETCH(QByteArray, line);
    QFETCH(QString, expected);
    const QStringList once = expected.isEmpty() ? QStringList() : QStringList{expected};
    QCOMPARE(told(PortParser::parsePorts(line, isSS)), once);
    QCOMPARE(told(PortParser::parsePorts("\n  " + line + " \n\n" + line, isSS)), once + once);
}

void TestPortParser::twentyThousand()
{
    QByteArray output;
    for (int i = 0; i < 20'000; ++i) {
        output += "tcp ESTAB 0 0 10.0.0.1:" + QByteArray::number(i) +
                  " 10.0.0.2:443 users:((\"curl\",pid=" + QByteArray::number(i) + ",fd=6))\n";
    }
    const QList<PortInfo> ports = PortParser::parsePorts(output, true);
    QCOMPARE(ports.size(), 20'000);
    QCOMPARE(told(ports.last()), u"tcp ESTAB 10.0.0.1|19999 10.0.0.2|443 19999/curl"_s);
    QVERIFY(ports[0].id != ports[1].id);
    QCOMPARE(PortParser::parsePorts(output.repeated(11), true).size(), PortParser::kMostPorts);
}

void TestPortParser::hostileSizes()
{
    // Each would take minutes if a part of the line were looked at again for every piece of it.
    const QByteArray begin("tcp LISTEN 0 1 *:80 *:* users:((");
    QCOMPARE(PortParser::parsePorts(begin + QByteArray("\",pid=").repeated(100'000), true).size(), 1);
    QCOMPARE(PortParser::parsePorts(begin + "\"" + QByteArray("x\",pid=").repeated(100'000), true).size(), 1);
    QCOMPARE(PortParser::parsePorts(begin + QByteArray("name=,").repeated(100'000), true).size(), 1);
    QCOMPARE(PortParser::parsePorts(begin + QByteArray("\" ").repeated(200'000), true).size(), 1);
    QVERIFY(PortParser::parsePorts(QByteArray(1'000'000, ' '), true).isEmpty());
    const QByteArray colons = "tcp LISTEN 0 1 " + QByteArray(500'000, ':') + " " + QByteArray(500'000, '%');
    QCOMPARE(PortParser::parsePorts(colons, true).first().localAddress.size(), 499'999);
}

QTEST_GUILESS_MAIN(TestPortParser)
#include "test_port_parser.moc"
