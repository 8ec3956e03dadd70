#pragma once

#include <QCollator>
#include <QString>
#include <concepts>
#include <variant>

/// What a record is sorted by in one column. Keys of one column are of one kind; of different kinds, numbers come
/// first.
class SortKey
{
public:
    /// Before every other key.
    SortKey() = default;

    /// By value. What is no number comes before all numbers.
    template<typename Number>
        requires std::integral<Number> || std::floating_point<Number>
    SortKey(
        Number number) // NOLINT(google-explicit-constructor): a column's key may be a function that gives a number
        : m_key(ordered(static_cast<double>(number)))
    {
    }

    /// By the characters' codes, ignoring case.
    static SortKey text(const QString &text) { return SortKey(text.toCaseFolded()); }

    /// By the characters' codes.
    static SortKey exact(const QString &text) { return SortKey(text); }

    /// As people sort names in the operator's language: ignoring case, digits by the number that they make.
    static SortKey natural(const QString &text);

    bool isNumber() const { return std::holds_alternative<double>(m_key); }

    double toNumber() const { return isNumber() ? std::get<double>(m_key) : 0; }

    /// Negative, zero or positive.
    static int compare(const SortKey &a, const SortKey &b);

private:
    explicit SortKey(const QString &text)
        : m_key(text)
    {
    }

    explicit SortKey(const QCollatorSortKey &key)
        : m_key(key)
    {
    }

    static double ordered(double number);

    std::variant<std::monostate, double, QString, QCollatorSortKey> m_key;
};
