#include "Models/ProcessInfo.h"

#include "Helpers/Text.h"
#include "Models/Json/Record.h"

using namespace Qt::StringLiterals;

template<>
struct Json::Fields<ProcessInfo> {
    static constexpr auto list = std::tuple{JSON_FIELD(ProcessInfo, pid),         JSON_FIELD(ProcessInfo, user),
                                            JSON_FIELD(ProcessInfo, cpu),         JSON_FIELD(ProcessInfo, memory),
                                            JSON_FIELD(ProcessInfo, rssMemoryKB), JSON_FIELD(ProcessInfo, command),
                                            JSON_FIELD(ProcessInfo, startTime)};
};

JSON_RECORD(ProcessInfo)

qint64 ProcessInfo::pidInt() const
{
    return Text::decimalInteger(pid).value_or(0);
}

double ProcessInfo::cpuDouble() const
{
    return Text::decimalNumber(cpu).value_or(0.0);
}

double ProcessInfo::memoryDouble() const
{
    return Text::decimalNumber(memory).value_or(0.0);
}

double ProcessInfo::rssMemoryKBDouble() const
{
    return Text::decimalNumber(rssMemoryKB).value_or(0.0);
}

QString ProcessInfo::memoryMB() const
{
    const std::optional<double> kilobytes = Text::decimalNumber(rssMemoryKB);
    if (!kilobytes) {
        return u"0 MB"_s;
    }
    const double megabytes = *kilobytes / 1024.0;
    return megabytes < 1.0 ? u"<1 MB"_s : QString::number(megabytes, 'f', 1) + u" MB"_s;
}
