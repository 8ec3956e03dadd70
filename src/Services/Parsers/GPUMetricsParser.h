#pragma once

#include "Models/GPUMetrics.h"

#include <QByteArrayView>
#include <optional>

/// Reads what GetGPUMetricsCommand prints: what each vendor's own tool says, in a frame of marks.
///
/// Nothing here fails: a device or a vendor that cannot be read is left out, with a line in the log. Sizes are handed
/// on in bytes, frequencies in MHz, power in watts, the rest in percent and degrees Celsius.
namespace GPUMetricsParser
{

/// The devices by their index; nothing when the output has neither the frame nor begins with a vendor's word.
std::optional<GPUMetrics> parse(QByteArrayView output);

/// The framed form: sections between "VENDOR:<word>" and "VENDOR_END". Indexes run on from vendor to vendor.
GPUMetrics parseMixedVendors(QByteArrayView lines);

/// One section. Each device gets `startIndex` plus its place for an index.
QList<GPUDevice> parseVendorData(QByteArrayView vendor, QByteArrayView data, int startIndex);

/// nvidia-smi(1), --query-gpu with --format=csv,noheader: twelve columns. A name with a comma shifts the others.
QList<GPUDevice> parseNvidia(QByteArrayView lines);

/// `amd-smi metric --json`: an array of objects, or an object with members "card0", "card1" and so on.
QList<GPUDevice> parseAMD(QByteArrayView text);

/// `rocm-smi --json` in the form of an object with an array "cards".
QList<GPUDevice> parseAMDLegacy(QByteArrayView text);

/// One sample of `intel_gpu_top -J`: always one device, of a nominal memory.
QList<GPUDevice> parseIntel(QByteArrayView text);

/// "8192 MiB" as 8192; 0 for what is no number.
qint64 parseMemoryMiB(QByteArrayView text);

/// "71.20 W", "34 %", "1410 MHz" as a number; absent for "N/A", "[N/A]" and other texts.
std::optional<double> parsePower(QByteArrayView text);
std::optional<double> parsePercentage(QByteArrayView text);
std::optional<double> parseFrequency(QByteArrayView text);

} // namespace GPUMetricsParser
