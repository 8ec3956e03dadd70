#pragma once

#include "Models/Json/Dates.h"
#include "Models/Json/Fields.h"
#include "Models/RawText.h"

#include <QByteArrayView>
#include <QList>
#include <QMap>
#include <QString>
#include <QUuid>
#include <array>
#include <cmath>
#include <concepts>
#include <limits>
#include <optional>
#include <span>
#include <variant>

// Reading is driven by tables without types, so that the parser library is compiled once. A table is made at compile
// time for each type of value; its functions get the value's address.
namespace Json
{

/// A JSON value that is no container. Text is UTF-8 and has been validated.
using Scalar = std::variant<std::nullptr_t, bool, qint64, quint64, double, std::string_view>;

struct FieldReader;

/// How one type of value is read. What is not set is refused.
struct ValueReader {
    const char *wanted = ""; ///< names the type in messages: "a text"

    /// An optional's way from its own address to that of its value; called before anything is read into it.
    void *(*engage)(void *value) = nullptr;

    /// False when the scalar does not fit.
    bool (*assign)(void *value, const Scalar &scalar) = nullptr;

    /// Lists: appends an element and gives its address.
    void *(*append)(void *list) = nullptr;
    /// Maps: gives the address of the value under a key.
    void *(*insert)(void *map, std::string_view key) = nullptr;
    const ValueReader *element = nullptr;

    /// Records.
    std::span<const FieldReader> fields = {};
    void (*finish)(void *record) = nullptr;

    constexpr bool isNullable() const { return engage != nullptr; }

    constexpr bool isRecord() const { return !fields.empty(); }
};

struct FieldReader {
    std::string_view key;
    const ValueReader *value;
    void *(*address)(void *record);
    bool isRequired;
};

/// Reads `json`, which must be one whole value, into `value`. False and the reason if it does not fit; `value` is
/// then partly filled.
bool read(QByteArrayView json, const ValueReader &reader, void *value, QString *failure);

template<class T>
struct ReaderOf;

template<class T>
inline constexpr ValueReader kReader = ReaderOf<T>::make();

/// The text of valid UTF-8, with a byte order mark at its front kept.
QString textOf(std::string_view utf8);

template<>
struct ReaderOf<QString> {
    static bool assign(void *value, const Scalar &scalar)
    {
        const auto *text = std::get_if<std::string_view>(&scalar);
        if (text) {
            *static_cast<QString *>(value) = textOf(*text);
        }
        return text != nullptr;
    }

    static constexpr ValueReader make() { return {.wanted = "a text", .assign = assign}; }
};

template<>
struct ReaderOf<bool> {
    static bool assign(void *value, const Scalar &scalar)
    {
        const auto *flag = std::get_if<bool>(&scalar);
        if (flag) {
            *static_cast<bool *>(value) = *flag;
        }
        return flag != nullptr;
    }

    static constexpr ValueReader make() { return {.wanted = "true or false", .assign = assign}; }
};

/// The integer that `scalar` is, also when it is written with an empty fraction or an exponent.
std::optional<qint64> integerOf(const Scalar &scalar);
std::optional<double> numberOf(const Scalar &scalar);
/// The UUID in its canonical form, in either case of letters.
std::optional<QUuid> uuidOf(const Scalar &scalar);

template<std::signed_integral T>
struct ReaderOf<T> {
    static bool assign(void *value, const Scalar &scalar)
    {
        const std::optional<qint64> number = integerOf(scalar);
        if (!number || !std::in_range<T>(*number)) {
            return false;
        }
        *static_cast<T *>(value) = static_cast<T>(*number);
        return true;
    }

    static constexpr ValueReader make() { return {.wanted = "an integer in range", .assign = assign}; }
};

template<>
struct ReaderOf<double> {
    static bool assign(void *value, const Scalar &scalar)
    {
        const std::optional<double> number = numberOf(scalar);
        if (number) {
            *static_cast<double *>(value) = *number;
        }
        return number.has_value();
    }

    static constexpr ValueReader make() { return {.wanted = "a number", .assign = assign}; }
};

template<>
struct ReaderOf<QUuid> {
    static bool assign(void *value, const Scalar &scalar)
    {
        const std::optional<QUuid> uuid = uuidOf(scalar);
        if (uuid) {
            *static_cast<QUuid *>(value) = *uuid;
        }
        return uuid.has_value();
    }

    static constexpr ValueReader make() { return {.wanted = "a UUID", .assign = assign}; }
};

template<>
struct ReaderOf<QDateTime> {
    static bool assign(void *value, const Scalar &scalar)
    {
        const std::optional<double> seconds = numberOf(scalar);
        const std::optional<QDateTime> date = seconds ? dateFromSeconds(*seconds) : std::nullopt;
        if (date) {
            *static_cast<QDateTime *>(value) = *date;
        }
        return date.has_value();
    }

    static constexpr ValueReader make() { return {.wanted = "a date", .assign = assign}; }
};

template<HasRawText Enum>
struct ReaderOf<Enum> {
    static bool assign(void *value, const Scalar &scalar)
    {
        const auto *text = std::get_if<std::string_view>(&scalar);
        const std::optional<Enum> known = text ? fromRawText<Enum>(textOf(*text)) : std::nullopt;
        if (known) {
            *static_cast<Enum *>(value) = *known;
        }
        return known.has_value();
    }

    static constexpr ValueReader make() { return {.wanted = "a known text", .assign = assign}; }
};

template<class T>
struct ReaderOf<std::optional<T>> {
    static void *engage(void *value) { return &static_cast<std::optional<T> *>(value)->emplace(); }

    static constexpr ValueReader make()
    {
        ValueReader reader = ReaderOf<T>::make();
        reader.engage = engage;
        return reader;
    }
};

template<class T>
struct ReaderOf<QList<T>> {
    static void *append(void *list)
    {
        auto &elements = *static_cast<QList<T> *>(list);
        if constexpr (requires { T{.id = QUuid()}; }) {
            return &elements.emplaceBack(T{.id = QUuid()}); // making an id that is read anyway costs a microsecond
        } else {
            return &elements.emplaceBack();
        }
    }

    static constexpr ValueReader make() { return {.wanted = "an array", .append = append, .element = &kReader<T>}; }
};

template<class T>
struct ReaderOf<QMap<QString, T>> {
    static void *insert(void *map, std::string_view key)
    {
        return &(*static_cast<QMap<QString, T> *>(map))[textOf(key)];
    }

    static constexpr ValueReader make() { return {.wanted = "an object", .insert = insert, .element = &kReader<T>}; }
};

template<IsRecord Record>
struct ReaderOf<Record> {
    template<size_t Index>
    static void *address(void *record)
    {
        return &(static_cast<Record *>(record)->*std::get<Index>(Fields<Record>::list).member);
    }

    template<class Member>
    static constexpr FieldReader fieldReader(const Field<Record, Member> &field, void *(*memberAddress)(void *))
    {
        constexpr const ValueReader *value = &kReader<Member>;
        return {field.key, value, memberAddress, !field.hasStoredDefault && !value->isNullable()};
    }

    template<size_t... Indices>
    static constexpr auto makeFields(std::index_sequence<Indices...>)
    {
        return std::array{fieldReader(std::get<Indices>(Fields<Record>::list), address<Indices>)...};
    }

    static constexpr size_t kCount = std::tuple_size_v<decltype(Fields<Record>::list)>;
    static_assert(kCount <= 64, "the keys that were seen are kept in 64 bits");
    static constexpr std::array<FieldReader, kCount> kFields = makeFields(std::make_index_sequence<kCount>());

    static void finish([[maybe_unused]] void *record)
    {
        if constexpr (requires(Record &r) { Fields<Record>::finish(r); }) {
            Fields<Record>::finish(*static_cast<Record *>(record));
        }
    }

    static constexpr ValueReader make() { return {.wanted = "an object", .fields = kFields, .finish = finish}; }
};

} // namespace Json
