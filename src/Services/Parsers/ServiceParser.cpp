#include "Services/Parsers/ServiceParser.h"

#include "Helpers/Text.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr QByteArrayView kFailure("ERROR: systemctl command failed or timed out");
constexpr QByteArrayView kDot("\xe2\x97\x8f"); // systemctl's mark before a unit in trouble, U+25CF
constexpr QByteArrayView kSuffix(".service");

bool is(QByteArrayView text, QByteArrayView word)
{
    return text.compare(word, Qt::CaseInsensitive) == 0;
}

ServiceStatus statusOf(QByteArrayView activeState, QByteArrayView subState)
{
    if (is(activeState, "active") && (is(subState, "running") || is(subState, "exited"))) {
        return ServiceStatus::Active;
    }
    return is(activeState, "failed") ? ServiceStatus::Failed : ServiceStatus::Inactive;
}

} // namespace

QList<ServiceInfo> ServiceParser::parse(QByteArrayView output)
{
    QList<ServiceInfo> services;
    if (output.contains(kFailure)) {
        return services;
    }
    for (const QByteArrayView line : Text::lines(output)) {
        const auto [field, found, rest] = Text::firstFields<4>(Text::trimmed(line));
        const auto [unit, loadState, activeState, subState] = field;
        const QByteArrayView description = Text::trimmed(rest);
        if (description.empty() || unit.startsWith(kDot)) {
            continue;
        }
        const QByteArrayView name = unit.endsWith(kSuffix) ? unit.chopped(kSuffix.size()) : unit;
        services.append({.name = Text::fromUtf8(name),
                         .status = statusOf(activeState, subState),
                         .enabled = is(loadState, "loaded"),
                         .description = description.contains("  ") ? Text::joinedFields(description)
                                                                   : Text::fromUtf8(description)});
    }
    return services;
}
