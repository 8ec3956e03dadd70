#include "Services/Parsers/MetricsParser.h"

#include "Helpers/Text.h"

#include <array>

namespace MetricsParser
{

namespace
{

struct MemoryKey {
    QByteArrayView key;
    qint64 MemoryMetrics::*field;
};

constexpr std::array kMemoryKeys{MemoryKey{"TOTAL", &MemoryMetrics::total}, MemoryKey{"USED", &MemoryMetrics::used},
                                 MemoryKey{"FREE", &MemoryMetrics::free}, MemoryKey{"CACHE", &MemoryMetrics::cached},
                                 MemoryKey{"AVAILABLE", &MemoryMetrics::available}};

constexpr std::array kSwapKeys{MemoryKey{"SWAP_TOTAL", &MemoryMetrics::swapTotal},
                               MemoryKey{"SWAP_USED", &MemoryMetrics::swapUsed},
                               MemoryKey{"SWAP_FREE", &MemoryMetrics::swapFree}};

qint64 integerOrZero(QByteArrayView text)
{
    return Text::decimalInteger(text).value_or(0);
}

template<size_t Count>
void readMemoryLine(QByteArrayView line, const std::array<MemoryKey, Count> &keys, MemoryMetrics &memory)
{
    for (bool isLast = false; !isLast;) {
        const auto cut = Text::firstPieces<1>(line, '|');
        isLast = cut.rest.empty();
        line = isLast ? QByteArrayView() : cut.rest.sliced(1);
        const auto pair = Text::firstPieces<2>(cut.field[0], ':');
        if (!pair.isComplete() || !pair.rest.empty()) {
            continue;
        }
        for (const MemoryKey &known : keys) {
            if (pair.field[0] == known.key) {
                memory.*known.field = integerOrZero(pair.field[1]);
            }
        }
    }
}

} // namespace

double cpuUsage(QByteArrayView output)
{
    // A login script that talks does so before the answer.
    const QByteArrayView whole = Text::trimmed(output);
    return Text::decimalNumber(Text::trimmed(whole.sliced(whole.lastIndexOf('\n') + 1))).value_or(0);
}

MemoryMetrics memory(QByteArrayView output)
{
    MemoryMetrics memory;
    const auto lines = Text::lines(output);
    auto line = lines.begin();
    while (line != lines.end() && !(*line).startsWith("TOTAL:")) {
        ++line;
    }
    if (line != lines.end()) {
        readMemoryLine(*line, kMemoryKeys, memory);
        ++line;
    }
    if (line != lines.end()) {
        readMemoryLine(*line, kSwapKeys, memory);
    }
    return memory;
}

QList<NetworkCounters> network(QByteArrayView output)
{
    QList<NetworkCounters> interfaces;
    for (const QByteArrayView line : Text::lines(output)) {
        const auto [piece, found, rest] = Text::firstPieces<7>(line, '|');
        if (found < piece.size() || piece[0] == "lo" || interfaces.size() == kMostCounters) {
            continue;
        }
        interfaces.append({.name = Text::fromUtf8(piece[0]),
                           .receivedBytes = integerOrZero(piece[1]),
                           .receivedPackets = integerOrZero(piece[2]),
                           .receiveErrors = integerOrZero(piece[3]),
                           .transmittedBytes = integerOrZero(piece[4]),
                           .transmittedPackets = integerOrZero(piece[5]),
                           .transmitErrors = integerOrZero(piece[6])});
    }
    return interfaces;
}

QList<DiskCounters> diskIO(QByteArrayView output)
{
    QList<DiskCounters> devices;
    for (const QByteArrayView line : Text::lines(output)) {
        const auto [piece, found, rest] = Text::firstPieces<3>(Text::trimmed(line), '|');
        if (found < piece.size() || devices.size() == kMostCounters) {
            continue;
        }
        devices.append({.name = Text::fromUtf8(Text::trimmed(piece[0])),
                        .sectorsRead = integerOrZero(Text::trimmed(piece[1])),
                        .sectorsWritten = integerOrZero(Text::trimmed(piece[2]))});
    }
    return devices;
}

} // namespace MetricsParser
