#include "Services/Parsers/Recorded.h"

#include "Services/Parsers/ServiceParser.h"

#include <QTest>
#include <algorithm>

using namespace Qt::StringLiterals;

class TestServiceParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordedLists();
    void statesAndNames_data();
    void statesAndNames();
    void whatIsNoUnit();
    void oneLineOfTenMegabytes();
};

void TestServiceParser::recordedLists()
{
    const QList<ServiceInfo> debian = ServiceParser::parse(recorded("units_debian.txt"));
    QCOMPARE(debian.size(), 93);
    QCOMPARE(std::ranges::count(debian, ServiceStatus::Active, &ServiceInfo::status), 30);
    QCOMPARE(std::ranges::count(debian, ServiceStatus::Failed, &ServiceInfo::status), 1);
    QCOMPARE(std::ranges::count(debian, ServiceStatus::Inactive, &ServiceInfo::status), 62);
    const auto find = [&debian](const QString &name) { return std::ranges::find(debian, name, &ServiceInfo::name); };
    QCOMPARE(*find(u"rig-broken"_s),
             (ServiceInfo{u"rig-broken"_s, ServiceStatus::Failed, true, u"Fails with code 3"_s}));
    QCOMPARE(*find(u"rig-flap"_s),
             (ServiceInfo{u"rig-flap"_s, ServiceStatus::Inactive, true, u"Restarts for ever"_s}));
    QCOMPARE(*find(uR"(rig-inst@a\x20b-c\x2dd)"_s),
             (ServiceInfo{uR"(rig-inst@a\x20b-c\x2dd)"_s, ServiceStatus::Active, true, u"Instance a b/c-d"_s}));
    QCOMPARE(*find(u"auditd"_s), (ServiceInfo{u"auditd"_s, ServiceStatus::Inactive, false, u"auditd.service"_s}));

    const QList<ServiceInfo> dnf = ServiceParser::parse(recorded("units_dnf.txt"));
    QCOMPARE(dnf.size(), 70);
    QCOMPARE(std::ranges::count(dnf, ServiceStatus::Active, &ServiceInfo::status), 19);
}

void TestServiceParser::statesAndNames_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<ServiceInfo>("service");
    const auto row = [](const char *line, const QString &name, ServiceStatus status, bool enabled) {
        QTest::newRow(line) << QByteArray(line) << ServiceInfo{name, status, enabled, u"Web server"_s};
    };
    row("a.service loaded active running Web server", u"a"_s, ServiceStatus::Active, true);
    row("a.service LOADED ACTIVE EXITED Web server\r", u"a"_s, ServiceStatus::Active, true);
    row("a.service loaded active waiting Web server", u"a"_s, ServiceStatus::Inactive, true);
    row("a.service loaded failed running Web server", u"a"_s, ServiceStatus::Failed, true);
    row("a.service masked reloading reload Web server", u"a"_s, ServiceStatus::Inactive, false);
    row("  a.service.service   loaded\t active running   Web    server  ", u"a.service"_s, ServiceStatus::Active,
        false); // a tab is no blank
    row("a.timer loaded active running Web server", u"a.timer"_s, ServiceStatus::Active, true);
    row(".service loaded active running Web server", u""_s, ServiceStatus::Active, true);
}

void TestServiceParser::statesAndNames()
{
    QFETCH(QByteArray, line);
    QFETCH(ServiceInfo, service);
    const QList<ServiceInfo> services = ServiceParser::parse(line + "\nb.service loaded failed failed B\n");
    QCOMPARE(services.size(), 2);
    QCOMPARE(services.first().name, service.name);
    QCOMPARE(services.first().status, service.status);
    QCOMPARE(services.first().enabled, service.enabled);
    QCOMPARE(services.first().description, service.description);
}

void TestServiceParser::whatIsNoUnit()
{
    QVERIFY(ServiceParser::parse("").isEmpty());
    QVERIFY(ServiceParser::parse("ERROR:\n").isEmpty());
    QVERIFY(ServiceParser::parse("a.service loaded active running\n").isEmpty());
    QVERIFY(ServiceParser::parse("● a.service loaded failed failed Web server\n●a.service loaded failed failed B\n")
                .isEmpty());
    QVERIFY(ServiceParser::parse("a.service loaded active running Web server\n"
                                 "ERROR: systemctl command failed or timed out\n")
                .isEmpty());
    QVERIFY(ServiceParser::parse("bash: systemctl: Permission denied\n").isEmpty());
}

void TestServiceParser::oneLineOfTenMegabytes()
{
    const QList<ServiceInfo> services =
        ServiceParser::parse("a.service loaded active running " + QByteArray(10'000'000, 'x'));
    QCOMPARE(services.size(), 1);
    QCOMPARE(services.first().description.size(), 10'000'000);
    QVERIFY(ServiceParser::parse(QByteArray(10'000'000, 'x')).isEmpty());
}

QTEST_GUILESS_MAIN(TestServiceParser)
#include "test_service_parser.moc"
