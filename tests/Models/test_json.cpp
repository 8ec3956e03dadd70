#include "Models/CronJob.h"
#include "Models/DockerContainer.h"
#include "Models/DockerImage.h"
#include "Models/DockerNetwork.h"
#include "Models/DockerVolume.h"
#include "Models/FileInfo.h"
#include "Models/Json.h"
#include "Models/Metrics.h"
#include "Models/PackageInfo.h"
#include "Models/PortInfo.h"
#include "Models/ProcessInfo.h"
#include "Models/Server.h"
#include "Models/ServiceInfo.h"
#include "Models/UserInfo.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

const QUuid kId = QUuid::fromString(u"c9d0e2a4-7b1f-4c55-9a52-0f2b8e6c1d37"_s);
#define ID "\"id\":\"C9D0E2A4-7B1F-4C55-9A52-0F2B8E6C1D37\""

QByteArray jsonOf(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// What a record must do: be written to the letter, read back as itself, refuse to be read without each of its
// required keys, and refuse each value of another JSON type.
template<class Record>
void check(const Record &record, const QByteArray &golden, const QStringList &mayBeMissing = {},
           const QStringList &mayBeNull = {})
{
    QCOMPARE(toJson(record), golden);
    QString failure;
    const auto back = fromJson<Record>(golden, &failure);
    QVERIFY2(back, qPrintable(failure));
    QVERIFY(*back == record);
    QCOMPARE(qHash(*back, 7), qHash(record, 7));

    const QList<QJsonValue> oneOfEachType{QJsonObject(), QJsonArray(), u"x"_s, 1.5, true, QJsonValue::Null};
    const QJsonObject object = QJsonDocument::fromJson(golden).object();
    QVERIFY(!object.isEmpty());
    for (const QString &key : object.keys()) {
        QJsonObject changed = object;
        changed.remove(key);
        QVERIFY2(fromJson<Record>(jsonOf(changed)).has_value() == mayBeMissing.contains(key), qPrintable(key));
        for (const QJsonValue &value : oneOfEachType) {
            if (value.type() != object.value(key).type()) {
                changed.insert(key, value);
                const bool mayBe = value.isNull() && mayBeNull.contains(key);
                QVERIFY2(fromJson<Record>(jsonOf(changed)).has_value() == mayBe, jsonOf(changed).constData());
            }
        }
    }
}

SystemInfo sampleSystemInfo()
{
    return {.hostname = u"h"_s,
            .osVersion = u"Debian"_s,
            .kernel = u"6.1"_s,
            .uptime = u"up 1 day"_s,
            .cpuInfo = u"CPU"_s,
            .cpuCount = u"4"_s,
            .memoryTotal = u"7.6Gi"_s,
            .diskUsage = {{u"/dev/sda1"_s, u"20G"_s, u"9G"_s, u"11G"_s, u"45%"_s, u"/"_s}},
            .loadAverage = u"0.1 0.2 0.3"_s,
            .lastUpdated = QDateTime::fromMSecsSinceEpoch(978307200500, Qt::UTC),
            .storageDevices =
                QList<StorageDevice>{{u"sda"_s, u"8:0"_s, false, u"20G"_s, true, u"disk"_s, {std::nullopt, u"/"_s}}}};
}

#define SYSTEM_INFO                                                                                                  \
    R"({"hostname":"h","osVersion":"Debian","kernel":"6.1","uptime":"up 1 day","cpuInfo":"CPU","cpuCount":"4",)"     \
    R"("memoryTotal":"7.6Gi","diskUsage":[{"filesystem":"/dev/sda1","size":"20G","used":"9G","available":"11G",)"    \
    R"("usePercent":"45%","mountPoint":"/"}],"loadAverage":"0.1 0.2 0.3","lastUpdated":0.5,"storageDevices":)"       \
    R"([{"name":"sda","maj:min":"8:0","rm":false,"size":"20G","ro":true,"type":"disk","mountpoints":[null,"/"]}]})"

Server sampleServer()
{
    Server server;
    server.id = kId;
    server.name = u"web"_s;
    server.host = u"web.example.net"_s;
    server.port = 2222;
    server.username = u"op"_s;
    server.authMethod = AuthMethod::PublicKey;
    server.privateKeyPath = u"/k"_s;
    server.isConnected = true;
    server.lastConnected = QDateTime::fromMSecsSinceEpoch(1758307200123, Qt::UTC);
    server.systemInfo = sampleSystemInfo();
    server.labels = {{u"team"_s, u"ops"_s}, {u"env"_s, u"prod"_s}};
    server.packageManager = PackageManager::Apt;
    server.useSudo = true;
    server.containerRuntime = ContainerRuntime::Podman;
    server.forwardAgent = true;
    return server;
}

constexpr auto kRequiredOfServer =
    "{" ID R"(,"name":"n","host":"h","port":22,"username":"u","authMethod":"sshAgent")";

// A required part of a server, to which `more` keys are added.
std::optional<Server> serverWith(const QByteArray &more, QString *failure = nullptr)
{
    return fromJson<Server>(kRequiredOfServer + (more.isEmpty() ? more : "," + more) + "}", failure);
}

} // namespace

class TestJson : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void serverAndSystemInfo();
    void listings();
    void containers();
    void metrics();
    void oldServersGetDefaultsAndAreWrittenWhole();
    void gpusAreReadInOrderOfTheirIndex();
    void numbers_data();
    void numbers();
    void uuids_data();
    void uuids();
    void textsSurvive();
    void whatIsNoJson_data();
    void whatIsNoJson();
    void unknownKeysArePassedOverAtAnyDepth();
    void aFailureNamesItsPlace();
    void whatJsonCannotSayIsNotWritten();
};

void TestJson::serverAndSystemInfo()
{
    check(sampleServer(),
          "{" ID R"(,"name":"web","host":"web.example.net","port":2222,"username":"op","authMethod":"publicKey",)"
          R"("privateKeyPath":"/k","isConnected":true,"lastConnected":780000000.123,"systemInfo":)" SYSTEM_INFO
          R"(,"labels":{"env":"prod","team":"ops"},"packageManager":"apt","useSudo":true,)"
          R"("containerRuntime":"podman","forwardAgent":true})",
          {u"privateKeyPath"_s, u"isConnected"_s, u"lastConnected"_s, u"systemInfo"_s, u"labels"_s,
           u"packageManager"_s, u"useSudo"_s, u"containerRuntime"_s, u"forwardAgent"_s},
          {u"privateKeyPath"_s, u"lastConnected"_s, u"systemInfo"_s});
    check(sampleSystemInfo(), SYSTEM_INFO, {u"storageDevices"_s}, {u"storageDevices"_s});
    check(
        sampleSystemInfo().diskUsage.first(),
        R"({"filesystem":"/dev/sda1","size":"20G","used":"9G","available":"11G","usePercent":"45%","mountPoint":"/"})");
    check(
        sampleSystemInfo().storageDevices->first(),
        R"({"name":"sda","maj:min":"8:0","rm":false,"size":"20G","ro":true,"type":"disk","mountpoints":[null,"/"]})");
    check(StorageDeviceList{}, R"({"blockdevices":[]})");
}

void TestJson::listings()
{
    check(ProcessInfo{u"1"_s, u"root"_s, u"0.5"_s, u"1.5"_s, u"512"_s, u"/sbin/init"_s, u"Nov20"_s},
          R"({"pid":"1","user":"root","cpu":"0.5","memory":"1.5","rssMemoryKB":"512","command":"/sbin/init",)"
          R"("startTime":"Nov20"})");
    check(ServiceInfo{u"ssh"_s, ServiceStatus::Failed, true, u"d"_s},
          R"({"name":"ssh","status":"failed","enabled":true,"description":"d"})");
    check(FileInfo{kId, u"n"_s, u"/n"_s, u"4"_s, u"-rw"_s, u"May 1"_s, u"o"_s, u"g"_s, false},
          "{" ID R"(,"name":"n","path":"/n","size":"4","permissions":"-rw","lastModified":"May 1","owner":"o",)"
          R"("group":"g","isDirectory":false})");
    check(CronJob{kId, u"0"_s, u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"c"_s, u"u"_s, false},
          "{" ID R"(,"minute":"0","hour":"1","dayOfMonth":"2","month":"3","dayOfWeek":"4","command":"c","user":"u",)"
          R"("isEnabled":false})");
    check(PackageInfo{kId, u"n"_s, u"1.0"_s, u"d"_s, true, u"2 MB"_s},
          "{" ID R"(,"name":"n","version":"1.0","description":"d","isInstalled":true,"size":"2 MB"})", {u"size"_s},
          {u"size"_s});
    check(PortInfo{kId, u"tcp"_s, u"0.0.0.0"_s, u"22"_s, u"*"_s, u"*"_s, u"LISTEN"_s, u"sshd"_s, u"7"_s},
          "{" ID R"(,"protocolType":"tcp","localAddress":"0.0.0.0","localPort":"22","foreignAddress":"*",)"
          R"("foreignPort":"*","state":"LISTEN","processName":"sshd","pid":"7"})");
    check(UserInfo{kId, u"u"_s, u"1000"_s, u"100"_s, u"U"_s, u"/home/u"_s, u"/bin/sh"_s},
          "{" ID R"(,"username":"u","uid":"1000","gid":"100","fullName":"U","homeDirectory":"/home/u",)"
          R"("shell":"/bin/sh"})");
}

void TestJson::containers()
{
    check(DockerContainer{u"i"_s, u"n"_s, u"m"_s, u"Up"_s, u"80/tcp"_s, u"now"_s, u"1B"_s},
          R"({"id":"i","name":"n","image":"m","status":"Up","ports":"80/tcp","created":"now","size":"1B"})",
          {u"size"_s}, {u"size"_s});
    check(DockerContainerDetail{u"i"_s,     u"n"_s,   u"m"_s,     u"s"_s,        u"c"_s,    u"p"_s,        u"v"_s,
                                {u"A=1"_s}, {u"b"_s}, u"10"_s,    u"no"_s,       u"/l"_s,   u"t1"_s,       u"t2"_s,
                                u"aa"_s,    u"h"_s,   u"linux"_s, u"overlay2"_s, u"json"_s, {u"1.1.1.1"_s}},
          R"({"id":"i","name":"n","image":"m","status":"s","created":"c","ports":"p","mounts":"v",)"
          R"("environment":["A=1"],"networks":["b"],"ipAddress":"10","restartPolicy":"no","logPath":"/l",)"
          R"("startedAt":"t1","finishedAt":"t2","macAddress":"aa","hostname":"h","platform":"linux",)"
          R"("driver":"overlay2","logDriver":"json","dns":["1.1.1.1"]})");
    check(DockerImage{u"i"_s, u"r"_s, u"t"_s, u"x"_s, u"c"_s, u"5MB"_s},
          R"({"id":"i","repository":"r","tag":"t","imageId":"x","created":"c","size":"5MB"})");
    check(DockerVolume{u"i"_s, u"n"_s, u"local"_s, u"/m"_s, u"c"_s, u"s"_s, {{u"a"_s, u"b"_s}}},
          R"({"id":"i","name":"n","driver":"local","mountpoint":"/m","created":"c","scope":"s","labels":{"a":"b"}})");
    check(DockerNetwork{u"i"_s, u"n"_s, u"bridge"_s, u"local"_s, u"c"_s, true, false, {u"x"_s}},
          R"({"id":"i","name":"n","driver":"bridge","scope":"local","created":"c","isInternal":true,)"
          R"("attachable":false,"containers":["x"]})");
}

void TestJson::metrics()
{
    const GPUDevice gpu{kId, 1, u"g"_s, GPUVendor::Amd, 12.5, 30, 10, 20, 61.0, 1.5, 2.5, 3.5, 4.5, 5.5};
#define GPU                                                                                                          \
    "{" ID R"(,"index":1,"name":"g","vendor":"AMD","utilization":12.5,"memoryTotal":30,"memoryUsed":10,)"            \
    R"("memoryFree":20,"temperature":61,"powerDraw":1.5,"powerLimit":2.5,"coreFrequency":3.5,)"                      \
    R"("memoryFrequency":4.5,"fanSpeed":5.5})"
    const QStringList optionals{u"temperature"_s,   u"powerDraw"_s,       u"powerLimit"_s,
                                u"coreFrequency"_s, u"memoryFrequency"_s, u"fanSpeed"_s};
    check(gpu, GPU, optionals, optionals);
    const MetricsSnapshot snapshot{kId,
                                   QDateTime::fromMSecsSinceEpoch(978307199000, Qt::UTC),
                                   99.5,
                                   {9, 8, 7, 6, 5, 4, 3, 2, std::numeric_limits<qint64>::min()},
                                   {{kId, u"/dev/a"_s, u"/"_s, 1, 2, 3, 4, 5}},
                                   {{{kId, u"eth0"_s, 1, 2, 3, 4, 5, 6}}},
                                   {0.25, 0.5, 1e-7},
                                   {{{u"sda"_s, 1.5, 1e20}}},
                                   GPUMetrics{{gpu}}};
    check(snapshot,
          "{" ID R"(,"timestamp":-1,"cpuUsage":99.5,"memoryUsage":{"total":9,"used":8,"free":7,"available":6,)"
          R"("cached":5,"buffers":4,"swapTotal":3,"swapUsed":2,"swapFree":-9223372036854775808},"diskMetrics":[{)" ID
          R"(,"filesystem":"/dev/a","mountPoint":"/","total":1,"used":2,"available":3,"readBytesPerSec":4,)"
          R"("writeBytesPerSec":5}],"networkMetrics":{"interfaces":[{)" ID
          R"(,"name":"eth0","receiveBytesPerSec":1,"transmitBytesPerSec":2,"receivePacketsPerSec":3,)"
          R"("transmitPacketsPerSec":4,"receiveErrors":5,"transmitErrors":6}]},"loadAverage":{"oneMinute":0.25,)"
          R"("fiveMinutes":0.5,"fifteenMinutes":1e-07},"diskIOMetrics":{"devices":[{"deviceName":"sda",)"
          R"("readBytesPerSec":1.5,"writeBytesPerSec":1e+20}]},"gpuMetrics":{"gpus":[)" GPU "]}}",
          {u"gpuMetrics"_s}, {u"gpuMetrics"_s});
    check(snapshot.diskMetrics.first(),
          "{" ID R"(,"filesystem":"/dev/a","mountPoint":"/","total":1,"used":2,"available":3,"readBytesPerSec":4,)"
          R"("writeBytesPerSec":5})");
    check(snapshot.networkMetrics.interfaces.first(),
          "{" ID R"(,"name":"eth0","receiveBytesPerSec":1,"transmitBytesPerSec":2,"receivePacketsPerSec":3,)"
          R"("transmitPacketsPerSec":4,"receiveErrors":5,"transmitErrors":6})");
}

void TestJson::oldServersGetDefaultsAndAreWrittenWhole()
{
    const std::optional<Server> server = serverWith({});
    QVERIFY(server);
    QCOMPARE(toJson(*server),
             kRequiredOfServer +
                 QByteArray(R"(,"isConnected":false,"labels":{},"packageManager":"unknown","useSudo":false,)"
                            R"("containerRuntime":"docker","forwardAgent":false})"));
    QVERIFY(!serverWith(R"("containerRuntime":"lxc")"));
    QVERIFY(!serverWith(R"("packageManager":"pacman")"));
    QVERIFY(!serverWith(R"("packageManager":null)"));
    QVERIFY(!fromJson<Server>(QByteArray(kRequiredOfServer).replace("sshAgent", "magic") + "}"));
}

void TestJson::gpusAreReadInOrderOfTheirIndex()
{
    GPUMetrics metrics;
    for (const auto &[index, name] : {std::pair{2, u"a"_s}, {0, u"b"_s}, {2, u"c"_s}, {0, u"d"_s}, {1, u"e"_s}}) {
        metrics.gpus.append(GPUDevice{.index = index, .name = name});
    }
    const auto read = fromJson<GPUMetrics>(toJson(metrics));
    QString names;
    for (const GPUDevice &gpu : read->gpus) {
        names += gpu.name;
    }
    QCOMPARE(names, u"bdeac"_s);
}

void TestJson::numbers_data()
{
    QTest::addColumn<QByteArray>("port");
    QTest::addColumn<int>("read"); // -1: refused
    QTest::newRow("plain") << QByteArray("8022") << 8022;
    QTest::newRow("empty fraction") << QByteArray("22.0") << 22;
    QTest::newRow("exponent") << QByteArray("2.2e1") << 22;
    QTest::newRow("largest") << QByteArray("2147483647") << 2147483647;
    for (const char *refused : {"1.5", "2147483648", "-2147483649", "9223372036854775808", "18446744073709551616",
                                "1e400", "-1e400", "022", "+22", ".5", "0x16", "NaN", "\"22\""}) {
        QTest::newRow(refused) << QByteArray(refused) << -1;
    }
}

void TestJson::numbers()
{
    QFETCH(QByteArray, port);
    QFETCH(int, read);
    const auto server = fromJson<Server>(QByteArray(kRequiredOfServer).replace(":22", ":" + port) + "}");
    QCOMPARE(server ? server->port : -1, read);
}

void TestJson::uuids_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("lower case") << QByteArray("c9d0e2a4-7b1f-4c55-9a52-0f2b8e6c1d37") << true;
    QTest::newRow("mixed case") << QByteArray("C9d0e2a4-7B1f-4C55-9a52-0F2b8e6c1D37") << true;
    QTest::newRow("braces") << QByteArray("{C9D0E2A4-7B1F-4C55-9A52-0F2B8E6C1D37}") << false;
    QTest::newRow("no hyphens") << QByteArray("C9D0E2A47B1F4C559A520F2B8E6C1D37") << false;
    QTest::newRow("hyphen moved") << QByteArray("C9D0E2A-47B1F-4C55-9A52-0F2B8E6C1D37") << false;
    QTest::newRow("no hex digit") << QByteArray("G9D0E2A4-7B1F-4C55-9A52-0F2B8E6C1D37") << false;
    QTest::newRow("blank behind") << QByteArray("C9D0E2A4-7B1F-4C55-9A52-0F2B8E6C1D37 ") << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void TestJson::uuids()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, isTaken);
    const auto server =
        fromJson<Server>(QByteArray(kRequiredOfServer).replace("C9D0E2A4-7B1F-4C55-9A52-0F2B8E6C1D37", text) + "}");
    QCOMPARE(server.has_value(), isTaken);
    if (server) {
        QCOMPARE(server->id, kId);
    }
}

void TestJson::textsSurvive()
{
    DockerNetwork network;
    for (const QString &text :
         {u""_s, u"\"\\/\b\f\n\r\t"_s, u"\0\x01\x1f\x7f\u0080\u2028"_s, u"\U0001F600 \ufffe\uffff"_s, u"\ufeffbom"_s,
          u"\ufeff\ufeff"_s, u"a\ufeff"_s, u"</script>\u00e9"_s}) {
        network.containers.append(text);
    }
    QCOMPARE(fromJson<DockerNetwork>(toJson(network))->containers, network.containers);
    const QByteArray escaped =
        R"({"name":"A\u00e9\ud83d\ude00\/","status":"failed","enabled":true,"description":""})";
    QCOMPARE(fromJson<ServiceInfo>(escaped)->name, u"A\u00e9\U0001F600/"_s);
}

void TestJson::whatIsNoJson_data()
{
    QTest::addColumn<QByteArray>("json");
    const QByteArray whole = R"({"name":"n","status":"failed","enabled":true,"description":"d"})";
    QVERIFY(fromJson<ServiceInfo>(whole));
    QVERIFY(fromJson<ServiceInfo>(" \n" + whole + "\n"));
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("blank") << QByteArray("  ");
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("in an array") << "[" + whole + "]";
    QTest::newRow("text behind") << whole + "x";
    QTest::newRow("twice") << whole + whole;
    QTest::newRow("NUL behind") << whole + QByteArray(1, '\0');
    QTest::newRow("comment") << "/**/" + whole;
    QTest::newRow("trailing comma") << QByteArray(whole).replace("}", ",}");
    QTest::newRow("single quotes") << QByteArray(whole).replace('"', '\'');
    QTest::newRow("key twice") << QByteArray(whole).replace("{", R"({"name":"other",)");
    QTest::newRow("lone surrogate") << QByteArray(whole).replace(":\"n", R"(:"\ud800)");
    QTest::newRow("line feed in a text") << QByteArray(whole).replace(":\"n", ":\"\n");
    QTest::newRow("invalid UTF-8") << QByteArray(whole).replace(":\"n", ":\"\xff");
    QTest::newRow("overlong UTF-8") << QByteArray(whole).replace(":\"n", ":\"\xc0\x80");
    QTest::newRow("surrogate in UTF-8") << QByteArray(whole).replace(":\"n", ":\"\xed\xa0\x80");
    QTest::newRow("invalid UTF-8 below an unknown key") << QByteArray(whole).replace("{", "{\"x\":[\"\xff\"],");
    for (qsizetype size = 1; size < whole.size(); ++size) {
        QTest::addRow("cut at %lld", static_cast<long long>(size)) << whole.first(size);
    }
}

void TestJson::whatIsNoJson()
{
    QFETCH(QByteArray, json);
    QString failure;
    QVERIFY(!fromJson<ServiceInfo>(json, &failure));
    QVERIFY(!failure.isEmpty());
}

void TestJson::unknownKeysArePassedOverAtAnyDepth()
{
    constexpr int kDepth = 500'000; // deep enough for one stack frame a level to overflow the stack
    const QByteArray arrays = QByteArray(kDepth, '[') + QByteArray(kDepth, ']');
    const QByteArray objects = QByteArray("{\"a\":").repeated(kDepth) + "1" + QByteArray(kDepth, '}');
    const auto server =
        serverWith(R"("future":{"name":1,"deep":)" + arrays + R"(},"more":)" + objects + R"(,"useSudo":true)");
    QVERIFY(server);
    QCOMPARE(server->name, u"n"_s);
    QVERIFY(server->useSudo);
    QVERIFY(!serverWith(R"("labels":)" + arrays));
    QVERIFY(!fromJson<QList<Server>>(QByteArray(kDepth, '[')));
}

void TestJson::aFailureNamesItsPlace()
{
    QString failure;
    QVERIFY(!fromJson<StorageDeviceList>(
        R"({"blockdevices":[{"name":"a","maj:min":"8:0","rm":"0","size":"","ro":false,"type":"","mountpoints":[]}]})",
        &failure));
    QCOMPARE(failure, u"expected true or false at $.blockdevices[0].rm"_s);
    QVERIFY(!serverWith(R"("systemInfo":{"hostname":"h"})", &failure));
    QCOMPARE(failure, u"expected a value at $.systemInfo.osVersion"_s);
    QVERIFY(!serverWith(R"("labels":{"a":"b","c":3})", &failure));
    QCOMPARE(failure, u"expected a text at $.labels.*"_s);
    QVERIFY(!fromJson<Server>("[]", &failure));
    QCOMPARE(failure, u"expected an object at $"_s);
    QVERIFY(!fromJson<Server>("{]", &failure));
    QCOMPARE(failure, u"not valid JSON at byte 2"_s);
}

void TestJson::whatJsonCannotSayIsNotWritten()
{
    QVERIFY(toJson(LoadAverage{1.0, std::numeric_limits<double>::infinity(), 1.0}).isEmpty());
    QVERIFY(toJson(LoadAverage{std::nan(""), 1.0, 1.0}).isEmpty());
    const QByteArray beyondTheCalendar = QByteArray(SYSTEM_INFO).replace(":0.5", ":1e300");
    QVERIFY(!fromJson<SystemInfo>(beyondTheCalendar));
    const auto smallest = fromJson<LoadAverage>(R"({"oneMinute":5e-324,"fiveMinutes":-0.0,"fifteenMinutes":0.1})");
    QCOMPARE(fromJson<LoadAverage>(toJson(*smallest)), smallest);
}

QTEST_GUILESS_MAIN(TestJson)
#include "test_json.moc"
