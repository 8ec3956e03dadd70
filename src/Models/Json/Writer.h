#pragma once

#include "Models/Json/Dates.h"
#include "Models/Json/Fields.h"
#include "Models/RawText.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QUuid>
#include <algorithm>
#include <concepts>
#include <optional>

namespace Json
{

/// Collects compact JSON text.
class Writer
{
public:
    void raw(std::string_view text)
    {
        const auto size = static_cast<qsizetype>(text.size());
        std::copy(text.begin(), text.end(), room(size));
        m_size += size;
    }

    void text(QStringView value);
    void integer(qint64 value);
    void number(double value);
    void uuid(const QUuid &value);

    /// What was written; empty if a number had no JSON form. The writer is empty then.
    QByteArray take();

private:
    /// The place behind what was written, with space for `size` bytes.
    char *room(qsizetype size)
    {
        if (m_text.size() - m_size < size) {
            m_text.resize(std::max(m_text.size() * 2, m_size + size + kFirstRoom));
        }
        return m_text.data() + m_size;
    }

    static constexpr qsizetype kFirstRoom = 256;

    QByteArray m_text; // longer than what was written
    qsizetype m_size = 0;
    bool m_failed = false;
};

inline void write(Writer &to, const QString &value)
{
    to.text(value);
}

inline void write(Writer &to, bool value)
{
    to.raw(value ? "true" : "false");
}

template<std::integral T>
    requires(!std::same_as<T, bool>)
void write(Writer &to, T value)
{
    to.integer(value);
}

inline void write(Writer &to, double value)
{
    to.number(value);
}

inline void write(Writer &to, const QUuid &value)
{
    to.uuid(value);
}

inline void write(Writer &to, const QDateTime &value)
{
    to.number(secondsFromDate(value));
}

template<HasRawText Enum>
void write(Writer &to, Enum value)
{
    to.text(rawText(value));
}

template<IsRecord Record>
void write(Writer &to, const Record &record);

template<class T>
void write(Writer &to, const QList<T> &list);

/// Absent entries of a list; absent fields of a record never come here.
template<class T>
void write(Writer &to, const std::optional<T> &value)
{
    if (value) {
        write(to, *value);
    } else {
        to.raw("null");
    }
}

template<class T>
void write(Writer &to, const QList<T> &list)
{
    const char *separator = "";
    to.raw("[");
    for (const T &element : list) {
        to.raw(separator);
        write(to, element);
        separator = ",";
    }
    to.raw("]");
}

template<class T>
void write(Writer &to, const QMap<QString, T> &map)
{
    const char *separator = "";
    to.raw("{");
    for (auto it = map.begin(); it != map.end(); ++it) {
        to.raw(separator);
        to.text(it.key());
        to.raw(":");
        write(to, it.value());
        separator = ",";
    }
    to.raw("}");
}

template<class T>
constexpr bool isAbsent(const T &)
{
    return false;
}

template<class T>
constexpr bool isAbsent(const std::optional<T> &value)
{
    return !value.has_value();
}

template<IsRecord Record>
void write(Writer &to, const Record &record)
{
    const char *separator = "";
    to.raw("{");
    const auto writeField = [&](const auto &field) {
        if (!isAbsent(record.*field.member)) {
            to.raw(separator);
            to.raw(field.quotedKey);
            write(to, record.*field.member);
            separator = ",";
        }
    };
    std::apply([&](const auto &...fields) { (writeField(fields), ...); }, Fields<Record>::list);
    to.raw("}");
}

} // namespace Json
