#include "Models/CronJob.h"

#include "Models/Json/Record.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

template<>
struct Json::Fields<CronJob> {
    static constexpr auto list =
        std::tuple{JSON_FIELD(CronJob, id),         JSON_FIELD(CronJob, minute), JSON_FIELD(CronJob, hour),
                   JSON_FIELD(CronJob, dayOfMonth), JSON_FIELD(CronJob, month),  JSON_FIELD(CronJob, dayOfWeek),
                   JSON_FIELD(CronJob, command),    JSON_FIELD(CronJob, user),   JSON_FIELD(CronJob, isEnabled)};
};

JSON_RECORD(CronJob)

namespace
{

constexpr qsizetype kTimeFields = 5;

bool isSet(const QString &field)
{
    return field != "*"_L1;
}

// What stands in the user column of a system crontab, and not the beginning of a command.
bool looksLikeUser(const QString &piece)
{
    return !piece.startsWith(u'/') && !piece.contains(u'=') && !piece.contains(u'\'') && !piece.contains(u'"');
}

QString dayName(const QString &dayOfWeek)
{
    static constexpr std::array kNames{"Sunday"_L1,   "Monday"_L1, "Tuesday"_L1,  "Wednesday"_L1,
                                       "Thursday"_L1, "Friday"_L1, "Saturday"_L1, "Sunday"_L1};
    if (dayOfWeek.size() == 1 && dayOfWeek.front() >= u'0' && dayOfWeek.front() <= u'7') {
        return kNames.at(static_cast<size_t>(dayOfWeek.front().unicode() - u'0'));
    }
    return u"Day "_s + dayOfWeek;
}

} // namespace

CronJob CronJob::fromCronLine(const QString &cronLine, const QString &user, bool isUserCrontab)
{
    static const QRegularExpression separators(u"[ \t]+"_s);
    CronJob job;
    QString text = cronLine.trimmed();
    job.isEnabled = !text.startsWith(u'#');
    if (!job.isEnabled) {
        text = text.mid(1).trimmed();
    }
    job.user = user;
    const QStringList pieces = text.split(separators, Qt::SkipEmptyParts);
    if (pieces.size() <= kTimeFields) {
        job.minute = job.hour = job.dayOfMonth = job.month = job.dayOfWeek = u"*"_s;
        job.command = text;
        return job;
    }
    job.minute = pieces[0];
    job.hour = pieces[1];
    job.dayOfMonth = pieces[2];
    job.month = pieces[3];
    job.dayOfWeek = pieces[4];
    qsizetype commandFrom = kTimeFields;
    if (!isUserCrontab && pieces.size() > kTimeFields + 1 && looksLikeUser(pieces[kTimeFields])) {
        job.user = pieces[kTimeFields];
        ++commandFrom;
    }
    job.command = pieces.sliced(commandFrom).join(u' ');
    return job;
}

QString CronJob::schedule() const
{
    return QStringList{minute, hour, dayOfMonth, month, dayOfWeek}.join(u' ');
}

QString CronJob::displaySchedule() const
{
    if (!isSet(minute) || isSet(month)) {
        const bool isEveryMinute =
            !isSet(minute) && !isSet(hour) && !isSet(dayOfMonth) && !isSet(month) && !isSet(dayOfWeek);
        return isEveryMinute ? u"Every minute"_s : schedule();
    }
    if (!isSet(hour)) {
        return isSet(dayOfMonth) || isSet(dayOfWeek) ? schedule() : u"Every hour at %1 minutes"_s.arg(minute);
    }
    const QString time = hour + u':' + minute.rightJustified(2, u'0');
    if (!isSet(dayOfMonth)) {
        return isSet(dayOfWeek) ? u"Weekly on "_s + dayName(dayOfWeek) + u" at "_s + time : u"Daily at "_s + time;
    }
    return isSet(dayOfWeek) ? schedule() : u"Monthly on day "_s + dayOfMonth + u" at "_s + time;
}
