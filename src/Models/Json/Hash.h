#pragma once

#include "Models/Json/Fields.h"
#include "Models/RawText.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <QUuid>
#include <optional>
#include <type_traits>

// Hashes over the fields that JSON says, so that equal records have equal hashes.
namespace Json
{

template<class T>
size_t hash(const T &value, size_t seed)
{
    if constexpr (std::is_enum_v<T>) {
        return qHash(static_cast<int>(value), seed);
    } else {
        return qHash(value, seed);
    }
}

template<class T>
size_t hash(const std::optional<T> &value, size_t seed)
{
    return value ? hash(*value, qHash(1, seed)) : qHash(0, seed);
}

template<class T>
size_t hash(const QList<T> &list, size_t seed)
{
    for (const T &element : list) {
        seed = hash(element, seed);
    }
    return qHash(list.size(), seed);
}

template<class T>
size_t hash(const QMap<QString, T> &map, size_t seed)
{
    for (auto it = map.begin(); it != map.end(); ++it) {
        seed = hash(it.value(), hash(it.key(), seed));
    }
    return qHash(map.size(), seed);
}

template<IsRecord Record>
size_t hashFields(const Record &record, size_t seed)
{
    std::apply([&](const auto &...fields) { ((seed = hash(record.*fields.member, seed)), ...); },
               Fields<Record>::list);
    return seed;
}

} // namespace Json
