#include "Helpers/ByteCount.h"

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

struct Unit {
    QLatin1StringView name;
    double bytes;
    int decimals;
};

constexpr std::array kUnits{Unit{"KB"_L1, 1e3, 0},  Unit{"MB"_L1, 1e6, 1},  Unit{"GB"_L1, 1e9, 2},
                            Unit{"TB"_L1, 1e12, 2}, Unit{"PB"_L1, 1e15, 2}, Unit{"EB"_L1, 1e18, 2}};

QString withoutTrailingZeros(QString figure)
{
    if (figure.contains(u'.')) {
        while (figure.endsWith(u'0')) {
            figure.chop(1);
        }
        if (figure.endsWith(u'.')) {
            figure.chop(1);
        }
    }
    return figure;
}

} // namespace

QString fileByteCount(qint64 bytes)
{
    if (bytes == 0) {
        return u"Zero KB"_s;
    }
    if (bytes > -1000 && bytes < 1000) {
        return QString::number(bytes) + (bytes == 1 ? u" byte"_s : u" bytes"_s);
    }
    const auto value = static_cast<double>(bytes);
    size_t unit = 0;
    QString figure;
    // A figure that rounds to 1000 is told in the next unit.
    for (; unit < kUnits.size(); ++unit) {
        figure = QString::number(value / kUnits[unit].bytes, 'f', kUnits[unit].decimals);
        if (std::abs(figure.toDouble()) < 1000 || unit + 1 == kUnits.size()) {
            break;
        }
    }
    return withoutTrailingZeros(figure) + u' ' + kUnits[unit].name;
}
