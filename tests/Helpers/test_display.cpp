#include "Helpers/ByteCount.h"
#include "Helpers/TimeFormatHelper.h"

#include <QTest>
#include <limits>

using namespace Qt::StringLiterals;

class TestDisplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void byteCounts_data();
    void byteCounts();
    void spans_data();
    void spans();
    void timeTexts_data();
    void timeTexts();
};

void TestDisplay::byteCounts_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("shown");
    for (const auto &[bytes, shown] :
         std::initializer_list<std::pair<qint64, QString>>{{0, u"Zero KB"_s},
                                                           {1, u"1 byte"_s},
                                                           {12, u"12 bytes"_s},
                                                           {999, u"999 bytes"_s},
                                                           {1'000, u"1 KB"_s},
                                                           {3'400, u"3 KB"_s},
                                                           {999'499, u"999 KB"_s},
                                                           {999'500, u"1 MB"_s},
                                                           {48'230'000, u"48.2 MB"_s},
                                                           {999'960'000, u"1 GB"_s},
                                                           {1'250'000'000, u"1.25 GB"_s},
                                                           {1'500'000'000, u"1.5 GB"_s},
                                                           {100'000'000'000, u"100 GB"_s},
                                                           {2'345'000'000'000, u"2.35 TB"_s},
                                                           {std::numeric_limits<qint64>::max(), u"9.22 EB"_s},
                                                           {-5, u"-5 bytes"_s},
                                                           {-3'400, u"-3 KB"_s},
                                                           {std::numeric_limits<qint64>::min(), u"-9.22 EB"_s}}) {
        QTest::addRow("%lld", static_cast<long long>(bytes)) << bytes << shown;
    }
}

void TestDisplay::byteCounts()
{
    QFETCH(qint64, bytes);
    QTEST(fileByteCount(bytes), "shown");
}

void TestDisplay::spans_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("shown");
    for (const auto &[seconds, shown] :
         std::initializer_list<std::pair<qint64, QString>>{{-86'400, u"Just now"_s},
                                                           {0, u"Just now"_s},
                                                           {59, u"Just now"_s},
                                                           {60, u"1 minute ago"_s},
                                                           {119, u"1 minute ago"_s},
                                                           {120, u"2 minutes ago"_s},
                                                           {3'599, u"59 minutes ago"_s},
                                                           {3'600, u"1 hour ago"_s},
                                                           {86'399, u"23 hours ago"_s},
                                                           {86'400, u"1 day ago"_s},
                                                           {604'799, u"6 days ago"_s},
                                                           {604'800, u"1 week ago"_s},
                                                           {2'591'999, u"4 weeks ago"_s},
                                                           {2'592'000, u"1 month ago"_s},
                                                           {31'535'999, u"12 months ago"_s},
                                                           {31'536'000, u"1 year ago"_s},
                                                           {315'360'000, u"10 years ago"_s}}) {
        QTest::addRow("%lld s", static_cast<long long>(seconds)) << seconds << shown;
    }
}

void TestDisplay::spans()
{
    QFETCH(qint64, seconds);
    const QDateTime then(QDate(2026, 3, 1), QTime(12, 0), Qt::UTC);
    const QString text = u"2026-03-01T12:00:00Z"_s;
    QTEST(TimeFormatHelper::humanReadableTime(text, then.addSecs(seconds)), "shown");
    const QString almostAMinuteMore = TimeFormatHelper::humanReadableTime(text, then.addMSecs(59'999));
    QCOMPARE(almostAMinuteMore, u"Just now"_s);
}

void TestDisplay::timeTexts_data()
{
    QTest::addColumn<bool>("isTaken"); // as noon UTC
    for (const char *taken : {"2026-03-01T12:00:00Z", "2026-03-01T14:00:00+02:00", "2026-03-01T06:30:00-0530",
                              "2026-03-01T12:00:00.123456789Z", "2026-03-01T12:00:00.1Z",
                              "2026-03-01T13:00:00.5+01:00", "2026-03-01 12:00:00", "2026-03-01 12:00:00 +0000 UTC",
                              "2026-03-01 13:00:00 +0100 CET", "2026-03-01 09:00:00 -0300 -03"}) {
        QTest::newRow(taken) << true;
    }
    for (const char *refused :
         {"", "now", "2 hours ago", "2026-03-01", "2026-02-30T12:00:00Z", "2026-13-01T12:00:00Z",
          "2026-03-01T24:00:00Z", "2026-03-01T12:00:60Z", "2026-03-01T12:00:00", "2026-03-01T12:00:00+2500",
          "2026-03-01 12:00:00 +0000", "2026-03-01 12:00:00 UTC", "2026-03-01 12:00:00.5", " 2026-03-01T12:00:00Z",
          "2026-03-01T12:00:00Z\n", "2026-03-01 12:00:00\n", "0000-03-01 12:00:00"}) {
        QTest::newRow(refused) << false;
    }
}

void TestDisplay::timeTexts()
{
    QFETCH(bool, isTaken);
    const QString text = QString::fromLatin1(QTest::currentDataTag());
    const QDateTime now(QDate(2026, 3, 1), QTime(17, 0, 30), Qt::UTC);
    QCOMPARE(TimeFormatHelper::humanReadableTime(text, now), isTaken ? u"5 hours ago"_s : text);
}

QTEST_GUILESS_MAIN(TestDisplay)
#include "test_display.moc"
