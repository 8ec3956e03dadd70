#include "Services/Parsers/StorageDeviceParser.h"

#include <QTemporaryFile>
#include <QTest>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

// What `action` writes to standard output.
template<class Action>
QByteArray printed(Action action)
{
    QTemporaryFile file;
    if (!file.open()) {
        return "no file";
    }
    std::fflush(stdout);
    const int saved = ::dup(STDOUT_FILENO);
    if (saved < 0) {
        return "no descriptor";
    }
    ::dup2(file.handle(), STDOUT_FILENO);
    action();
    std::fflush(stdout);
    ::dup2(saved, STDOUT_FILENO);
    ::close(saved);
    file.seek(0);
    return file.readAll();
}

constexpr auto kListing = R"({
   "blockdevices": [
      {
         "name": "vda",
         "maj:min": "254:0",
         "rm": false,
         "size": "100G",
         "ro": false,
         "type": "disk",
         "mountpoints": [
             null
         ]
      },{
         "name": "vda1",
         "maj:min": "254:1",
         "rm": true,
         "size": "99.9G",
         "ro": true,
         "type": "part",
         "mountpoints": [
             "/var/lib/docker", "/"
         ],
         "uuid": "an unknown key"
      }
   ]
}
)";

} // namespace

class TestStorageDeviceParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aListing();
    void anEmptyListingIsSilent();
    void whatDoesNotDecodeIsToldOnStandardOutput_data();
    void whatDoesNotDecodeIsToldOnStandardOutput();
};

void TestStorageDeviceParser::aListing()
{
    const QList<StorageDevice> expected{
        {u"vda"_s, u"254:0"_s, false, u"100G"_s, false, u"disk"_s, {std::nullopt}},
        {u"vda1"_s, u"254:1"_s, true, u"99.9G"_s, true, u"part"_s, {u"/var/lib/docker"_s, u"/"_s}}};
    QVERIFY(StorageDeviceParser::parse(kListing) == expected);
}

void TestStorageDeviceParser::anEmptyListingIsSilent()
{
    QList<StorageDevice> devices;
    QCOMPARE(printed([&] { devices = StorageDeviceParser::parse("{\"blockdevices\":[]}\n"); }), QByteArray());
    QVERIFY(devices.isEmpty());
}

void TestStorageDeviceParser::whatDoesNotDecodeIsToldOnStandardOutput_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("nothing") << QByteArray() << QByteArray("not valid JSON at byte 1");
    QTest::newRow("a message") << QByteArray("lsblk: failed\x1b[2J") << QByteArray("not valid JSON at byte 1");
    QTest::newRow("older tool") << QByteArray(kListing).replace("mountpoints", "mountpoint")
                                << QByteArray("expected a value at $.blockdevices[0].mountpoints");
    QTest::newRow("flags as texts") << QByteArray(kListing).replace("\"rm\": true", "\"rm\": \"1\"")
                                    << QByteArray("expected true or false at $.blockdevices[1].rm");
    QTest::newRow("flags as numbers") << QByteArray(kListing).replace("\"ro\": false", "\"ro\": 0")
                                      << QByteArray("expected true or false at $.blockdevices[0].ro");
    QTest::newRow("no list") << QByteArray("{\"blockdevices\":{}}")
                             << QByteArray("expected an array at $.blockdevices");
    QTest::newRow("cut") << QByteArray(kListing).chopped(5) << QByteArray("not valid JSON at byte ");
}

void TestStorageDeviceParser::whatDoesNotDecodeIsToldOnStandardOutput()
{
    QFETCH(QByteArray, output);
    QFETCH(QByteArray, reason);
    QList<StorageDevice> devices;
    const QByteArray line = printed([&] { devices = StorageDeviceParser::parse(output); });
    QVERIFY(devices.isEmpty());
    QVERIFY2(line.startsWith("Failed to parse storage devices: " + reason), line.constData());
    QCOMPARE(line.count('\n'), 1);
}

QTEST_GUILESS_MAIN(TestStorageDeviceParser)
#include "test_storage_device_parser.moc"
