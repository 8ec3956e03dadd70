#include "Services/Parsers/SystemInfoParser.h"

#include "Helpers/Text.h"

#include <array>

using namespace Qt::StringLiterals;

namespace
{

constexpr QByteArrayView kSeparator("=== "); // opens a heading; the closing signs are followed by a line feed
constexpr QByteArrayView kHeadingEnd(" ===");

struct FactSection {
    QByteArrayView key;
    QString SystemInfo::*field;
};

constexpr std::array kFactSections{
    FactSection{"HOSTNAME", &SystemInfo::hostname},  FactSection{"OS", &SystemInfo::osVersion},
    FactSection{"KERNEL", &SystemInfo::kernel},      FactSection{"UPTIME", &SystemInfo::uptime},
    FactSection{"CPU", &SystemInfo::cpuInfo},        FactSection{"CPU_COUNT", &SystemInfo::cpuCount},
    FactSection{"MEMORY", &SystemInfo::memoryTotal}, FactSection{"LOAD", &SystemInfo::loadAverage}};

// One piece of the output: its first line is the heading without its opening signs.
void readSection(QByteArrayView piece, SystemInfo &info)
{
    const auto lines = Text::lines(Text::trimmed(piece));
    auto line = lines.begin();
    if (line == lines.end() || (*line).empty()) {
        return;
    }
    const QByteArray key = (*line).toByteArray().replace(kHeadingEnd, QByteArrayView());
    const QByteArrayView body = line.rest();
    if (key == "DISK") {
        info.diskUsage = SystemInfoParser::parseDiskUsage(body);
        return;
    }
    for (const FactSection &section : kFactSections) {
        if (key == section.key) {
            const auto value = ++line;
            info.*section.field = value == lines.end() ? u""_s : Text::fromUtf8(Text::trimmed(*value));
            return;
        }
    }
}

// df(1) translates its heading, but not the sign in it: "Use%", "Verw%", "Uso%".
bool isHeadingOfShare(QByteArrayView share)
{
    return share.endsWith('%') && !Text::decimalNumber(share.chopped(1));
}

} // namespace

SystemInfo SystemInfoParser::parse(QByteArrayView output, const QDateTime &now)
{
    SystemInfo info;
    info.lastUpdated = now;
    while (!output.empty()) {
        const qsizetype end = output.indexOf(kSeparator);
        readSection(end < 0 ? output : output.first(end), info);
        output = end < 0 ? QByteArrayView() : output.sliced(end + kSeparator.size());
    }
    return info;
}

QList<DiskInfo> SystemInfoParser::parseDiskUsage(QByteArrayView lines)
{
    QList<DiskInfo> disks;
    for (const QByteArrayView rawLine : Text::lines(lines)) {
        const QByteArrayView line = Text::trimmed(rawLine);
        const bool isHeading =
            line.contains("Mounted on") || (line.contains("Size") && line.contains("Used") && line.contains("Avail"));
        const auto fields = Text::firstFields<6>(line);
        if (!isHeading && fields.isComplete() && !isHeadingOfShare(fields.field[4])) {
            const auto text = [&](size_t index) { return Text::fromUtf8(fields.field[index]); };
            disks.append({.filesystem = text(0),
                          .size = text(1),
                          .used = text(2),
                          .available = text(3),
                          .usePercent = text(4),
                          .mountPoint = text(5)});
        }
    }
    return disks;
}
