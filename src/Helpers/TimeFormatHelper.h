#pragma once

#include <QDateTime>
#include <QString>

namespace TimeFormatHelper
{

/// How long ago `text` was, seen from `now`: "Just now", "5 minutes ago", "1 year ago". Taken are ISO 8601 with a
/// zone, with or without a fraction of seconds, "yyyy-MM-dd HH:mm:ss" in UTC, and the same with an offset and a zone
/// name behind it, as container runtimes print it. Any other text comes back unchanged.
QString humanReadableTime(const QString &text, const QDateTime &now = QDateTime::currentDateTimeUtc());

} // namespace TimeFormatHelper
