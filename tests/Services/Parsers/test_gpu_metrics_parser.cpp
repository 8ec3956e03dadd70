#include "Services/Parsers/GPUMetricsParser.h"

#include <QTest>

using namespace Qt::StringLiterals;

// No graphics processor was at hand: the outputs are written after the tools' own documentation.
namespace
{

constexpr qint64 kMiB = 1'048'576;

constexpr auto kNvidia =
    "0, NVIDIA GeForce RTX 3080, 45, 12 %, 10240 MiB, 2048 MiB, 8192 MiB, 71.20 W, 320.00 W, 34 %, 1410 MHz, 9501 "
    "MHz\n"
    "1, Tesla T4, 0, [N/A], 15360 MiB, 0 MiB, 15360 MiB, [N/A], N/A, [N/A], 300 MHz, [Not Supported]\n";

constexpr auto kAmd = R"([
    {"gpu": 4, "usage": {"gfx_activity": {"value": 37, "unit": "%"}},
     "power": {"socket_power": {"value": 96.5, "unit": "W"}, "power_limit": {"value": 203, "unit": "W"}},
     "clock": {"sclk": {"value": 2100, "unit": "MHz"}, "mclk": {"value": 1000, "unit": "MHz"}},
     "temperature": {"edge": {"value": 51, "unit": "C"}, "hotspot": {"value": 60, "unit": "C"}, "mem": {"value": 58}},
     "fan": {"value": 20}, "name": "Radeon RX 6800",
     "mem_usage": {"total_vram": {"value": 16368, "unit": "MB"}, "used_vram": {"value": 1024, "unit": "MB"}}},
    "no object",
    {"temperature": {"hotspot": "N/A", "edge": {"value": 44}}, "usage": "N/A",
     "mem_usage": {"used_vram": {"value": 2}, "total_vram": {"value": 1}}}
])";

QByteArray framed(const QByteArray &sections)
{
    return "MIXED_VENDOR_START\n" + sections + "MIXED_VENDOR_END\n";
}

} // namespace

class TestGPUMetricsParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nvidia();
    void nvidiaLinesThatDoNotFit();
    void amdList();
    void amdCards();
    void amdLegacy();
    void intel();
    void theFrame_data();
    void theFrame();
    void theFormsWithoutFrame();
    void units();
    void badInput_data();
    void badInput();
};

void TestGPUMetricsParser::nvidia()
{
    const QList<GPUDevice> gpus = GPUMetricsParser::parseNvidia(kNvidia);
    QCOMPARE(gpus.size(), 2);
    GPUDevice expected{.id = gpus[0].id,
                       .index = 0,
                       .name = u"NVIDIA GeForce RTX 3080"_s,
                       .vendor = GPUVendor::Nvidia,
                       .utilization = 12,
                       .memoryTotal = 10240 * kMiB,
                       .memoryUsed = 2048 * kMiB,
                       .memoryFree = 8192 * kMiB,
                       .temperature = 45,
                       .powerDraw = 71.2,
                       .powerLimit = 320,
                       .coreFrequency = 1410,
                       .memoryFrequency = 9501,
                       .fanSpeed = 34};
    QVERIFY(gpus[0] == expected);
    expected = {.id = gpus[1].id,
                .index = 1,
                .name = u"Tesla T4"_s,
                .vendor = GPUVendor::Nvidia,
                .memoryTotal = 15360 * kMiB,
                .memoryFree = 15360 * kMiB,
                .coreFrequency = 300};
    QVERIFY(gpus[1] == expected);
}

void TestGPUMetricsParser::nvidiaLinesThatDoNotFit()
{
    QVERIFY(GPUMetricsParser::parseNvidia("ERROR\nNVIDIA-SMI has failed\n\n1, a, 2\n").isEmpty());
    const QList<GPUDevice> shifted = GPUMetricsParser::parseNvidia(
        "x, A, B, 45, 12 %, 10 MiB, 2 MiB, 8 MiB, 71 W, 320 W, 34 %, 1410 MHz, 9501 MHz");
    QCOMPARE(shifted.size(), 1);
    QCOMPARE(shifted[0].index, 0);
    QCOMPARE(shifted[0].utilization, 45.0);
    const QList<GPUDevice> huge = GPUMetricsParser::parseNvidia(
        "99999999999, A, -4, %, 9223372036854775807 MiB, -9223372036854775807MiB, 1.5 MiB,,,,,");
    QCOMPARE(huge.size(), 1);
    QCOMPARE(huge[0].index, 0);
    QVERIFY(!huge[0].temperature && !huge[0].powerDraw && huge[0].memoryTotal > 0 && huge[0].memoryUsed < 0);
    QCOMPARE(huge[0].memoryFree, 0);
}

void TestGPUMetricsParser::amdList()
{
    const QList<GPUDevice> gpus = GPUMetricsParser::parseAMD(kAmd);
    QCOMPARE(gpus.size(), 2);
    GPUDevice expected{.id = gpus[0].id,
                       .index = 4,
                       .name = u"Radeon RX 6800"_s,
                       .vendor = GPUVendor::Amd,
                       .utilization = 37,
                       .memoryTotal = 16368 * kMiB,
                       .memoryUsed = 1024 * kMiB,
                       .memoryFree = 15344 * kMiB,
                       .temperature = 60,
                       .powerDraw = 96.5,
                       .powerLimit = 203,
                       .coreFrequency = 2100,
                       .memoryFrequency = 1000,
                       .fanSpeed = 20};
    QVERIFY(gpus[0] == expected);
    expected = {.id = gpus[1].id,
                .index = 2,
                .name = u"AMD GPU 2"_s,
                .vendor = GPUVendor::Amd,
                .memoryTotal = kMiB,
                .memoryUsed = 2 * kMiB,
                .memoryFree = -kMiB,
                .temperature = 44};
    QVERIFY(gpus[1] == expected);
}

void TestGPUMetricsParser::amdCards()
{
    const QList<GPUDevice> gpus = GPUMetricsParser::parseAMD(
        R"({"card1": {"name": "Radeon VII", "gpu_usage": 5.5, "mem_usage": 3, "mem_total": 10, "temperature": 40,
                      "power": 20, "power_cap": 250, "fan_speed": 18, "gpu_clock": 800, "mem_clock": 350},
            "system": {"name": "x"}, "card0": {}, "card2": 7})");
    QCOMPARE(gpus.size(), 2);
    const GPUDevice expected{.id = gpus[0].id,
                             .index = 0,
                             .name = u"Radeon VII"_s,
                             .vendor = GPUVendor::Amd,
                             .utilization = 5.5,
                             .memoryTotal = 10 * kMiB,
                             .memoryUsed = 3 * kMiB,
                             .memoryFree = 7 * kMiB,
                             .temperature = 40,
                             .powerDraw = 20,
                             .powerLimit = 250,
                             .coreFrequency = 800,
                             .memoryFrequency = 350,
                             .fanSpeed = 18};
    QVERIFY(gpus[0] == expected);
    QCOMPARE(gpus[1].name, u"AMD GPU 1"_s);
}

void TestGPUMetricsParser::amdLegacy()
{
    const QList<GPUDevice> gpus = GPUMetricsParser::parseAMDLegacy(
        R"({"cards": [{"name": "Vega 64", "gpu_use": 99, "temperature": 71.5, "power": 220,
                       "memory": {"used": 4096, "total": 8176}}, {"memory": {"used": 1.5}}]})");
    QCOMPARE(gpus.size(), 2);
    const GPUDevice expected{.id = gpus[0].id,
                             .index = 0,
                             .name = u"Vega 64"_s,
                             .vendor = GPUVendor::Amd,
                             .utilization = 99,
                             .memoryTotal = 8176 * kMiB,
                             .memoryUsed = 4096 * kMiB,
                             .memoryFree = 4080 * kMiB,
                             .temperature = 71.5,
                             .powerDraw = 220};
    QVERIFY(gpus[0] == expected);
    QCOMPARE(gpus[1].name, u"AMD GPU"_s);
    QCOMPARE(gpus[1].memoryUsed, 0);
    for (const char *other : {"ERROR", R"({"card0": {}})", R"({"cards": {}})", R"({"cards": [{}, 1]})", "[]"}) {
        QVERIFY(GPUMetricsParser::parseAMDLegacy(other).isEmpty());
    }
}

void TestGPUMetricsParser::intel()
{
    const QList<GPUDevice> gpus = GPUMetricsParser::parseIntel(
        R"({"frequency": {"requested": 350, "actual": 349.6, "unit": "MHz"}, "power": {"gpu": 1.25, "package": 9},
            "memory": {"used": 96}, "engines": {"Render/3D": 3.5, "Video": 12.25, "Blitter": 0}})");
    QCOMPARE(gpus.size(), 1);
    const GPUDevice expected{.id = gpus[0].id,
                             .index = 0,
                             .name = u"Intel Graphics"_s,
                             .vendor = GPUVendor::Intel,
                             .utilization = 12.25,
                             .memoryTotal = 1'073'741'824,
                             .memoryUsed = 96 * kMiB,
                             .memoryFree = 1'073'741'824 - 96 * kMiB,
                             .powerDraw = 1.25,
                             .coreFrequency = 349.6};
    QVERIFY(gpus[0] == expected);
    QCOMPARE(GPUMetricsParser::parseIntel(R"({"engines": {"Video": -3}})")[0].utilization, 0.0);
    QVERIFY(GPUMetricsParser::parseIntel("ERROR").isEmpty());
    QVERIFY(GPUMetricsParser::parseIntel("{}\n{}").isEmpty());
    QVERIFY(GPUMetricsParser::parseIntel("[ {}").isEmpty());
}

void TestGPUMetricsParser::theFrame_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QString>("gpus"); // index:name
    const QByteArray nvidia = QByteArray("VENDOR:NVIDIA\n") + kNvidia + "VENDOR_END\n";
    const QByteArray amd = "VENDOR:AMD\n[{\"gpu\": 0, \"name\": \"A\"}]\nVENDOR_END\n";
    const QString two = u"0:NVIDIA GeForce RTX 3080,1:Tesla T4"_s;
    QTest::newRow("no tool") << framed("") << QString();
    QTest::newRow("indexes run on") << framed(nvidia + amd) << two + u",2:A"_s;
    QTest::newRow("CRLF") << framed(nvidia + amd).replace("\n", "\r\n") << two + u",2:A"_s;
    QTest::newRow("order of the sections counts")
        << framed(amd + nvidia) << u"0:A,1:NVIDIA GeForce RTX 3080,2:Tesla T4"_s;
    QTest::newRow("one tool failed") << framed("VENDOR:NVIDIA\nERROR\nVENDOR_END\n" + amd) << u"0:A"_s;
    QTest::newRow("lines before the frame") << "DEBUG: x\nWelcome\n" + framed(amd) << u"0:A"_s;
    QTest::newRow("debug lines within") << framed(
                                               "VENDOR:AMD\nDEBUG: x\n[{\"name\":\nDEBUG: y\n\"A\"}]\nVENDOR_END\n")
                                        << u"0:A"_s;
    QTest::newRow("unknown vendor, lines between")
        << framed("VENDOR:OTHER\nx\nVENDOR_END\nnoise\n" + amd) << u"0:A"_s;
    QTest::newRow("next vendor ends a section")
        << framed(QByteArray("VENDOR:NVIDIA\n") + kNvidia + amd) << two + u",2:A"_s;
    QTest::newRow("a section still open is dropped") << framed(amd + "VENDOR:NVIDIA\n" + kNvidia) << u"0:A"_s;
    QTest::newRow("cut before the end") << "MIXED_VENDOR_START\n" + amd << u"0:A"_s;
}

void TestGPUMetricsParser::theFrame()
{
    QFETCH(QByteArray, output);
    QFETCH(QString, gpus);
    const std::optional<GPUMetrics> metrics = GPUMetricsParser::parse(output);
    QVERIFY(metrics);
    QStringList found;
    for (const GPUDevice &gpu : metrics->gpus) {
        found.append(QString::number(gpu.index) + u':' + gpu.name);
    }
    QCOMPARE(found.join(u','), gpus);
}

void TestGPUMetricsParser::theFormsWithoutFrame()
{
    const auto count = [](const QByteArray &output) {
        const std::optional<GPUMetrics> metrics = GPUMetricsParser::parse(output);
        return metrics ? metrics->gpus.size() : -1;
    };
    QCOMPARE(count(QByteArray("NVIDIA\n") + kNvidia), 2);
    QCOMPARE(count(QByteArray("\n AMD\n").trimmed() + '\n' + kAmd), 2);
    QCOMPARE(count("AMD_LEGACY\n{\"cards\": [{}]}"), 1);
    QCOMPARE(count("INTEL\n{\n}"), 1);
    QCOMPARE(count("NONE"), 0);
    QCOMPARE(count("bash: line 1: nvidia-smi: Permission denied"), -1);
    QCOMPARE(count(" \n\t"), -1);
    // Sorted, devices of one index in their order.
    const GPUMetrics sorted = *GPUMetricsParser::parse(
        "AMD\n[{\"gpu\":2,\"name\":\"c\"},{\"gpu\":1,\"name\":\"a\"},{\"gpu\":1,\"name\":\"b\"}]");
    QCOMPARE(sorted.gpus[0].name + sorted.gpus[1].name + sorted.gpus[2].name, u"abc"_s);
}

void TestGPUMetricsParser::units()
{
    QCOMPARE(GPUMetricsParser::parseMemoryMiB("8192 MiB"), 8192);
    QCOMPARE(GPUMetricsParser::parseMemoryMiB(" 8192MiB "), 8192);
    QCOMPARE(GPUMetricsParser::parseMemoryMiB("8192.5 MiB"), 0);
    QCOMPARE(GPUMetricsParser::parsePower("71.20 W"), std::optional(71.2));
    QCOMPARE(GPUMetricsParser::parsePercentage("34%"), std::optional(34.0));
    QCOMPARE(GPUMetricsParser::parseFrequency("1410 MHz"), std::optional(1410.0));
    for (const char *none : {"N/A", "[N/A]", "", " W", "1,5 W"}) {
        QVERIFY(!GPUMetricsParser::parsePower(none));
    }
}

void TestGPUMetricsParser::badInput_data()
{
    QTest::addColumn<QByteArray>("section");
    const QByteArray much(10'000'000, 'x');
    QTest::newRow("10 MB on one line") << much;
    QTest::newRow("deep nesting") << QByteArray(10'000'000, '[');
    QTest::newRow("deep nesting, whole") << QByteArray(QByteArray(100'000, '[') + QByteArray(100'000, ']'));
    QTest::newRow("a number too great") << QByteArray(R"([{"gpu": 1e999}])");
    QTest::newRow("numbers beyond 64 bits") << QByteArray(
        R"([{"gpu": 1e300, "mem_usage": {"total_vram": {"value": 1e300}, "used_vram": {"value": -1e300}}}])");
    QTest::newRow("no UTF-8") << QByteArray("[{\"name\": \"\xff\"}]");
    QTest::newRow("many devices") << QByteArray("[" + QByteArray("{},").repeated(100'000) + "{}]");
    QTest::newRow("cut") << QByteArray(R"([{"gpu": 0, "name": "A)");
}

void TestGPUMetricsParser::badInput()
{
    QFETCH(QByteArray, section);
    for (const char *vendor : {"NVIDIA", "AMD", "AMD_LEGACY", "INTEL"}) {
        const auto metrics =
            GPUMetricsParser::parse(framed("VENDOR:" + QByteArray(vendor) + '\n' + section + "\nVENDOR_END\n"));
        QVERIFY(metrics && metrics->gpus.size() <= 256);
    }
}

QTEST_GUILESS_MAIN(TestGPUMetricsParser)
#include "test_gpu_metrics_parser.moc"
