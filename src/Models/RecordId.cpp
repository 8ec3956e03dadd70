#include "Models/RecordId.h"

#include <QRandomGenerator>
#include <QtEndian>

QUuid RecordId::fresh()
{
    QRandomGenerator &random = *QRandomGenerator::global();
    quint64 high = random.generate64();
    quint64 low = random.generate64();
    high = (high & ~quint64(0xF000)) | 0x4000;              // RFC 4122: version 4,
    low = (low & ~(quint64(3) << 62)) | (quint64(2) << 62); // of its variant
    const auto byte = [low](int place) { return static_cast<uchar>(low >> (56 - 8 * place)); };
    return {static_cast<uint>(high >> 32),
            static_cast<ushort>(high >> 16),
            static_cast<ushort>(high),
            byte(0),
            byte(1),
            byte(2),
            byte(3),
            byte(4),
            byte(5),
            byte(6),
            byte(7)};
}
