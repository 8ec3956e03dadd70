#include "Services/Parsers/GPUMetricsParser.h"

#include "Helpers/Log.h"
#include "Helpers/Text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <nlohmann/json.hpp>
#include <ranges>
#include <utility>

using namespace Qt::StringLiterals;

namespace GPUMetricsParser
{

namespace
{

using Json = nlohmann::ordered_json; // devices stand in the order of the text

constexpr qint64 kMiB = 1'048'576;
constexpr qint64 kIntelMemory = 1'073'741'824; // intel_gpu_top(1) tells no total
constexpr qsizetype kNvidiaColumns = 12;
constexpr qsizetype kMostDevices = 256; // no server has more; what one lists beyond them is passed over

qint64 bytesOfMiB(qint64 amount)
{
    qint64 bytes = 0;
    if (qMulOverflow(amount, kMiB, &bytes)) {
        return amount < 0 ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max();
    }
    return bytes;
}

qint64 difference(qint64 total, qint64 used)
{
    qint64 rest = 0;
    return qSubOverflow(total, used, &rest) ? 0 : rest;
}

// A double that an integer can hold, without its fraction; else 0.
qint64 truncated(double value)
{
    constexpr double kLimit = 9.2e18;
    return value > -kLimit && value < kLimit ? static_cast<qint64>(value) : 0;
}

// `text` without `unit`, be it set off by a blank or not.
QByteArray withoutUnit(QByteArrayView text, const char *unit)
{
    return text.toByteArray().replace(QByteArray(" ") + unit, "").replace(unit, "").trimmed();
}

std::optional<double> numberWithoutUnit(QByteArrayView text, const char *unit)
{
    return Text::decimalNumber(withoutUnit(text, unit));
}

// --- JSON ---

// Whether brackets are opened within brackets beyond what any tool prints; those in texts count along. A value is
// built in memory for each, so that megabytes of them would become gigabytes.
bool isTooDeep(QByteArrayView text)
{
    constexpr int kDeepest = 100;
    int depth = 0;
    for (const char c : text) {
        depth += c == '[' || c == '{' ? 1 : c == ']' || c == '}' ? -1 : 0;
        if (depth > kDeepest) {
            return true;
        }
    }
    return false;
}

// The value, or nothing, with the reason in the log.
std::optional<Json> readJson(QByteArrayView text, const char *vendor)
{
    if (isTooDeep(text)) {
        Log::error(u"Failed to parse %1 JSON: nested too deeply"_s.arg(QLatin1StringView(vendor)));
        return std::nullopt;
    }
    try {
        return Json::parse(text.begin(), text.end());
    } catch (const Json::exception &failure) {
        Log::error(
            u"Failed to parse %1 JSON: %2"_s.arg(QLatin1StringView(vendor), QString::fromUtf8(failure.what())));
        return std::nullopt;
    }
}

// A member of a member of an object; null when one of them is missing.
const Json *find(const Json &object, std::initializer_list<const char *> path)
{
    const Json *at = &object;
    for (const char *key : path) {
        if (!at->is_object()) {
            return nullptr;
        }
        const auto member = at->find(key);
        if (member == at->end()) {
            return nullptr;
        }
        at = &*member;
    }
    return at;
}

std::optional<double> number(const Json &object, std::initializer_list<const char *> path)
{
    const Json *value = find(object, path);
    return value && value->is_number() ? std::optional(value->get<double>()) : std::nullopt;
}

qint64 integer(const Json &object, std::initializer_list<const char *> path)
{
    const std::optional<double> value = number(object, path);
    const qint64 whole = truncated(value.value_or(0));
    return value && static_cast<double>(whole) == *value ? whole : 0;
}

QString text(const Json &object, const char *key, const QString &otherwise)
{
    const Json *value = find(object, {key});
    return value && value->is_string() ? QString::fromStdString(value->get<std::string>()) : otherwise;
}

qint64 memoryOf(const Json &object, std::initializer_list<const char *> path)
{
    return truncated(std::clamp(number(object, path).value_or(0) * static_cast<double>(kMiB), -9e18, 9e18));
}

bool isObject(const Json &value)
{
    return value.is_object();
}

// --- AMD ---

std::optional<double> amdTemperature(const Json &card)
{
    for (const char *place : {"hotspot", "edge", "mem"}) {
        const Json *reading = find(card, {"temperature", place});
        if (reading && reading->is_object()) {
            return number(*reading, {"value"});
        }
    }
    return std::nullopt;
}

GPUDevice amdDevice(const Json &card, int place)
{
    const qint64 index = find(card, {"gpu"}) ? integer(card, {"gpu"}) : place;
    GPUDevice gpu{.index = std::in_range<int>(index) ? static_cast<int>(index) : place,
                  .vendor = GPUVendor::Amd,
                  .utilization = number(card, {"usage", "gfx_activity", "value"}).value_or(0),
                  .memoryTotal = memoryOf(card, {"mem_usage", "total_vram", "value"}),
                  .memoryUsed = memoryOf(card, {"mem_usage", "used_vram", "value"}),
                  .temperature = amdTemperature(card),
                  .powerDraw = number(card, {"power", "socket_power", "value"}),
                  .powerLimit = number(card, {"power", "power_limit", "value"}),
                  .coreFrequency = number(card, {"clock", "sclk", "value"}),
                  .memoryFrequency = number(card, {"clock", "mclk", "value"}),
                  .fanSpeed = number(card, {"fan", "value"})};
    gpu.name = text(card, "name", u"AMD GPU %1"_s.arg(gpu.index));
    gpu.memoryFree = difference(gpu.memoryTotal, gpu.memoryUsed);
    return gpu;
}

GPUDevice amdFlatDevice(const Json &card, int place)
{
    GPUDevice gpu{.index = place,
                  .name = text(card, "name", u"AMD GPU %1"_s.arg(place)),
                  .vendor = GPUVendor::Amd,
                  .utilization = number(card, {"gpu_usage"}).value_or(0),
                  .memoryTotal = memoryOf(card, {"mem_total"}),
                  .memoryUsed = memoryOf(card, {"mem_usage"}),
                  .temperature = number(card, {"temperature"}),
                  .powerDraw = number(card, {"power"}),
                  .powerLimit = number(card, {"power_cap"}),
                  .coreFrequency = number(card, {"gpu_clock"}),
                  .memoryFrequency = number(card, {"mem_clock"}),
                  .fanSpeed = number(card, {"fan_speed"})};
    gpu.memoryFree = difference(gpu.memoryTotal, gpu.memoryUsed);
    return gpu;
}

GPUDevice amdLegacyDevice(const Json &card, int place)
{
    GPUDevice gpu{.index = place,
                  .name = text(card, "name", u"AMD GPU"_s),
                  .vendor = GPUVendor::Amd,
                  .utilization = number(card, {"gpu_use"}).value_or(0),
                  .memoryTotal = bytesOfMiB(integer(card, {"memory", "total"})),
                  .memoryUsed = bytesOfMiB(integer(card, {"memory", "used"})),
                  .temperature = number(card, {"temperature"}),
                  .powerDraw = number(card, {"power"})};
    gpu.memoryFree = difference(gpu.memoryTotal, gpu.memoryUsed);
    return gpu;
}

// --- NVIDIA ---

std::optional<GPUDevice> nvidiaDevice(QByteArrayView line)
{
    const auto [column, found, rest] = Text::firstPieces<kNvidiaColumns>(line, ',');
    if (found < column.size()) {
        Log::error(u"NVIDIA GPU line has insufficient parts: %1 - line: %2"_s.arg(QString::number(found),
                                                                                  Text::fromUtf8(line)));
        return std::nullopt;
    }
    std::array<QByteArrayView, kNvidiaColumns> value;
    std::ranges::transform(column, value.begin(), Text::trimmed);
    const qint64 index = Text::decimalInteger(value[0]).value_or(0);
    const std::optional<double> temperature = Text::decimalNumber(value[2]);
    return GPUDevice{.index = std::in_range<int>(index) ? static_cast<int>(index) : 0,
                     .name = Text::fromUtf8(value[1]),
                     .vendor = GPUVendor::Nvidia,
                     .utilization =
                         Text::decimalNumber(value[3].toByteArray().replace("%", "").trimmed()).value_or(0),
                     .memoryTotal = bytesOfMiB(parseMemoryMiB(value[4])),
                     .memoryUsed = bytesOfMiB(parseMemoryMiB(value[5])),
                     .memoryFree = bytesOfMiB(parseMemoryMiB(value[6])),
                     .temperature = temperature > 0.0 ? temperature : std::nullopt,
                     .powerDraw = parsePower(value[7]),
                     .powerLimit = parsePower(value[8]),
                     .coreFrequency = parseFrequency(value[10]),
                     .memoryFrequency = parseFrequency(value[11]),
                     .fanSpeed = parsePercentage(value[9])};
}

void sortByIndex(QList<GPUDevice> &gpus)
{
    std::ranges::stable_sort(gpus, {}, &GPUDevice::index);
}

} // namespace

std::optional<GPUMetrics> parse(QByteArrayView output)
{
    const QByteArrayView whole = Text::trimmed(output);
    const auto lines = Text::lines(whole);
    const auto first = lines.begin();
    if (first == lines.end()) {
        return std::nullopt;
    }
    // A login script that talks does so before the frame.
    if (const auto start = std::ranges::find(lines, QByteArrayView("MIXED_VENDOR_START")); start != lines.end()) {
        return parseMixedVendors(start.rest());
    }
    const QByteArrayView vendor = *first;
    GPUMetrics metrics;
    if (vendor == "NVIDIA") {
        metrics.gpus = parseNvidia(first.rest());
    } else if (vendor == "AMD") {
        metrics.gpus = parseAMD(first.rest());
    } else if (vendor == "AMD_LEGACY") {
        metrics.gpus = parseAMDLegacy(first.rest());
    } else if (vendor == "INTEL") {
        metrics.gpus = parseIntel(first.rest());
    } else if (vendor != "NONE") {
        return std::nullopt;
    }
    sortByIndex(metrics.gpus);
    return metrics;
}

GPUMetrics parseMixedVendors(QByteArrayView lines)
{
    constexpr QByteArrayView kVendor("VENDOR:");
    GPUMetrics metrics;
    std::optional<QByteArrayView> vendor; // of the open section
    QByteArray data;
    const auto close = [&] {
        if (vendor && !data.isEmpty() && metrics.gpus.size() < kMostDevices) {
            metrics.gpus += parseVendorData(*vendor, data, static_cast<int>(metrics.gpus.size()));
        }
        vendor.reset();
        data.clear();
    };
    for (const QByteArrayView line : Text::lines(lines)) {
        if (line.startsWith(kVendor)) {
            close();
            vendor = line.sliced(kVendor.size());
        } else if (line == "MIXED_VENDOR_END") {
            break;
        } else if (line == "VENDOR_END") {
            close();
        } else if (vendor && line != "ERROR" && !line.startsWith("DEBUG:")) {
            data.append(line).append('\n');
        }
    }
    sortByIndex(metrics.gpus);
    return metrics;
}

QList<GPUDevice> parseVendorData(QByteArrayView vendor, QByteArrayView data, int startIndex)
{
    QList<GPUDevice> gpus;
    if (vendor == "NVIDIA") {
        gpus = parseNvidia(data);
    } else if (vendor == "AMD") {
        gpus = parseAMD(data);
    } else if (vendor == "AMD_LEGACY") {
        gpus = parseAMDLegacy(data);
    } else if (vendor == "INTEL") {
        gpus = parseIntel(data);
    }
    for (GPUDevice &gpu : gpus) {
        gpu.index = startIndex++;
    }
    return gpus;
}

QList<GPUDevice> parseNvidia(QByteArrayView lines)
{
    QList<GPUDevice> gpus;
    for (const QByteArrayView line : Text::lines(lines)) {
        if (line == "ERROR" || gpus.size() == kMostDevices) {
            continue;
        }
        if (const std::optional<GPUDevice> gpu = nvidiaDevice(line)) {
            gpus.append(*gpu);
        }
    }
    return gpus;
}

QList<GPUDevice> parseAMD(QByteArrayView text)
{
    QList<GPUDevice> gpus;
    const std::optional<Json> json = readJson(text, "AMD GPU");
    if (json && json->is_array()) {
        for (int place = 0; const Json &card : *json) {
            if (card.is_object() && gpus.size() < kMostDevices) {
                gpus.append(amdDevice(card, place));
            }
            ++place;
        }
    } else if (json && json->is_object()) {
        for (const auto &[key, card] : json->items()) {
            if (key.starts_with("card") && card.is_object() && gpus.size() < kMostDevices) {
                gpus.append(amdFlatDevice(card, static_cast<int>(gpus.size())));
            }
        }
    }
    return gpus;
}

QList<GPUDevice> parseAMDLegacy(QByteArrayView text)
{
    QList<GPUDevice> gpus;
    if (Text::trimmed(text) == "ERROR") {
        return gpus;
    }
    const std::optional<Json> json = readJson(text, "AMD Legacy GPU");
    if (!json) {
        return gpus;
    }
    const Json *cards = find(*json, {"cards"});
    if (!cards || !cards->is_array() || !std::ranges::all_of(*cards, isObject)) {
        Log::error(u"Failed to parse AMD Legacy GPU JSON: no list of objects under \"cards\""_s);
        return gpus;
    }
    for (const Json &card : *cards | std::views::take(kMostDevices)) {
        gpus.append(amdLegacyDevice(card, static_cast<int>(gpus.size())));
    }
    return gpus;
}

QList<GPUDevice> parseIntel(QByteArrayView text)
{
    if (Text::trimmed(text) == "ERROR") {
        return {};
    }
    const std::optional<Json> json = readJson(text, "Intel GPU");
    if (!json) {
        return {};
    }
    const auto engine = [&json](const char *name) { return number(*json, {"engines", name}).value_or(0); };
    const qint64 used = bytesOfMiB(integer(*json, {"memory", "used"}));
    return {GPUDevice{.name = u"Intel Graphics"_s,
                      .vendor = GPUVendor::Intel,
                      .utilization = std::max({0.0, engine("Render/3D"), engine("Video"), engine("Blitter")}),
                      .memoryTotal = kIntelMemory,
                      .memoryUsed = used,
                      .memoryFree = difference(kIntelMemory, used),
                      .powerDraw = number(*json, {"power", "gpu"}),
                      .coreFrequency = number(*json, {"frequency", "actual"})}};
}

qint64 parseMemoryMiB(QByteArrayView text)
{
    return Text::decimalInteger(withoutUnit(text, "MiB")).value_or(0);
}

std::optional<double> parsePower(QByteArrayView text)
{
    return numberWithoutUnit(text, "W");
}

std::optional<double> parsePercentage(QByteArrayView text)
{
    return numberWithoutUnit(text, "%");
}

std::optional<double> parseFrequency(QByteArrayView text)
{
    return numberWithoutUnit(text, "MHz");
}

} // namespace GPUMetricsParser
