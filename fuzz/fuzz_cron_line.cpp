// One crontab line, in both forms. A job has five time fields without blanks, and a line that was read is read the
// same way when it is put together again.

#include "Check.h"

#include "Models/CronJob.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace
{

void check(const QString &line, bool isUserCrontab)
{
    const CronJob job = CronJob::fromCronLine(line, u"me"_s, isUserCrontab);
    for (const QString &field : {job.minute, job.hour, job.dayOfMonth, job.month, job.dayOfWeek}) {
        FUZZ_CHECK(!field.isEmpty() && !field.contains(u' ') && !field.contains(u'\t'));
    }
    FUZZ_CHECK(job.schedule().count(u' ') == 4);
    FUZZ_CHECK(!job.displaySchedule().isEmpty());
    FUZZ_CHECK(job.command.size() <= line.size());
    FUZZ_CHECK(!isUserCrontab || job.user == u"me"_s);
    FUZZ_CHECK(job.isEnabled == !line.trimmed().startsWith(u'#'));

    const bool isWhole = line.trimmed().mid(job.isEnabled ? 0 : 1).trimmed().split(u' ').size() >= 6;
    if (isUserCrontab && isWhole && !job.minute.startsWith(u'#')) {
        const CronJob again = CronJob::fromCronLine(job.schedule() + u' ' + job.command, u"me"_s, true);
        FUZZ_CHECK(job.command.isEmpty() || again.schedule() == job.schedule());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString line = QString::fromUtf8(QByteArrayView(data, static_cast<qsizetype>(size)));
    check(line, true);
    check(line, false);
    return 0;
}
