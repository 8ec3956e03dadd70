#include "Helpers/TimeFormatHelper.h"

#include <QRegularExpression>
#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace
{

struct Unit {
    qint64 upToSeconds; ///< spans below this are told in the unit
    qint64 seconds;
    QLatin1StringView name;
};

constexpr qint64 kMinute = 60;
constexpr qint64 kHour = 3'600;
constexpr qint64 kDay = 86'400;
constexpr qint64 kWeek = 604'800;
constexpr qint64 kMonth = 2'592'000;
constexpr qint64 kYear = 31'536'000;

constexpr std::array kUnits{Unit{kHour, kMinute, "minute"_L1}, Unit{kDay, kHour, "hour"_L1},
                            Unit{kWeek, kDay, "day"_L1},       Unit{kMonth, kWeek, "week"_L1},
                            Unit{kYear, kMonth, "month"_L1},   Unit{0, kYear, "year"_L1}};

// "+0200", "+02:00", "Z" or nothing, in seconds east of UTC.
std::optional<int> offsetSeconds(QStringView zone)
{
    if (zone.isEmpty() || zone == "Z"_L1) {
        return 0;
    }
    const int hours = zone.sliced(1, 2).toInt();
    const int minutes = zone.last(2).toInt();
    if (hours > 23 || minutes > 59) {
        return std::nullopt;
    }
    return (zone.front() == u'-' ? -1 : 1) * (hours * 3600 + minutes * 60);
}

std::optional<QDateTime> parsed(const QString &text)
{
    static const QString day = uR"(([0-9]{4})-([0-9]{2})-([0-9]{2}))"_s;
    static const QString time = uR"(([0-9]{2}):([0-9]{2}):([0-9]{2}))"_s;
    static const QRegularExpression iso(u"\\A"_s + day + u'T' + time +
                                        uR"((?:\.[0-9]{1,9})?(Z|[+-][0-9]{2}:?[0-9]{2})\z)"_s);
    static const QRegularExpression spaced(u"\\A"_s + day + u' ' + time +
                                           uR"((?: ([+-][0-9]{4}) [A-Za-z0-9+:-]+)?\z)"_s);
    QRegularExpressionMatch match = iso.match(text);
    if (!match.hasMatch()) {
        match = spaced.match(text);
    }
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const auto number = [&match](int group) { return match.capturedView(group).toInt(); };
    const QDate date(number(1), number(2), number(3));
    const QTime clock(number(4), number(5), number(6));
    const std::optional<int> offset = offsetSeconds(match.capturedView(7));
    if (!date.isValid() || !clock.isValid() || !offset) {
        return std::nullopt;
    }
    return QDateTime(date, clock, Qt::UTC).addSecs(-*offset);
}

} // namespace

QString TimeFormatHelper::humanReadableTime(const QString &text, const QDateTime &now)
{
    const std::optional<QDateTime> then = parsed(text);
    if (!then) {
        return text;
    }
    const qint64 seconds = then->msecsTo(now) / 1000;
    if (seconds < kMinute) {
        return u"Just now"_s;
    }
    const auto *unit = kUnits.begin();
    while (unit + 1 != kUnits.end() && seconds >= unit->upToSeconds) {
        ++unit;
    }
    const qint64 count = seconds / unit->seconds;
    return u"%1 %2%3 ago"_s.arg(count).arg(unit->name, count == 1 ? ""_L1 : "s"_L1);
}
