// MetricsParser. The four readers take the same bytes.

#include "Check.h"

#include "Services/Parsers/MetricsParser.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView output(data, static_cast<qsizetype>(size));
    FUZZ_CHECK(std::isfinite(MetricsParser::cpuUsage(output)));
    FUZZ_CHECK(MetricsParser::memory(output).buffers == 0);
    const auto interfaces = MetricsParser::network(output);
    FUZZ_CHECK(interfaces.size() <= MetricsParser::kMostCounters);
    for (const MetricsParser::NetworkCounters &interface : interfaces) {
        FUZZ_CHECK(interface.name != u"lo" && !interface.name.contains(u'|') && !interface.name.contains(u'\n'));
    }
    const auto devices = MetricsParser::diskIO(output);
    FUZZ_CHECK(devices.size() <= MetricsParser::kMostCounters);
    for (const MetricsParser::DiskCounters &device : devices) {
        FUZZ_CHECK(!device.name.contains(u'|') && !device.name.contains(u'\n'));
    }
    return 0;
}
