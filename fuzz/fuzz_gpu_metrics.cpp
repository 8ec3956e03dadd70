// GPUMetricsParser, as a whole and each vendor's reader. Devices are in the order of their indexes.

#include "Check.h"

#include "Helpers/Log.h"
#include "Services/Parsers/GPUMetricsParser.h"

#include <algorithm>
#include <cmath>

namespace
{

void check(const QList<GPUDevice> &gpus)
{
    FUZZ_CHECK(gpus.size() <= 512);
    for (const GPUDevice &gpu : gpus) {
        FUZZ_CHECK(std::isfinite(gpu.utilization));
        FUZZ_CHECK(gpu.vendor == GPUVendor::Nvidia || !gpu.fanSpeed || std::isfinite(*gpu.fanSpeed));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    [[maybe_unused]] static const bool isQuiet = [] {
        Log::settings().allowedCategories = {Log::Category::Ui}; // each input that does not fit would be told
        return true;
    }();
    const QByteArrayView output(data, static_cast<qsizetype>(size));
    if (const auto metrics = GPUMetricsParser::parse(output)) {
        check(metrics->gpus);
        FUZZ_CHECK(std::ranges::is_sorted(metrics->gpus, {}, &GPUDevice::index));
    }
    check(GPUMetricsParser::parseNvidia(output));
    check(GPUMetricsParser::parseAMD(output));
    check(GPUMetricsParser::parseAMDLegacy(output));
    check(GPUMetricsParser::parseIntel(output));
    return 0;
}
