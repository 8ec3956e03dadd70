#pragma once

#include <QList>
#include <QString>
#include <QStringView>
#include <array>
#include <optional>
#include <utility>

/// Enumerations that are stored and shown as text. Each one specialises RawTexts with a constexpr array of
/// (case, QStringView of a literal), in the order in which its cases are listed.
template<class Enum>
struct RawTexts;

template<class Enum>
concept HasRawText = requires { RawTexts<Enum>::all.size(); };

/// The text that stands for `value` in storage; empty for a number that is no case.
template<HasRawText Enum>
QString rawText(Enum value)
{
    for (const auto &[known, text] : RawTexts<Enum>::all) {
        if (known == value) {
            return QString::fromRawData(text.data(), text.size()); // refers to the literal in the table
        }
    }
    return {};
}

/// The case whose text is exactly `text`; nothing if there is none.
template<HasRawText Enum>
std::optional<Enum> fromRawText(QStringView text)
{
    for (const auto &[known, knownText] : RawTexts<Enum>::all) {
        if (text == knownText) {
            return known;
        }
    }
    return std::nullopt;
}

/// All cases, in their listed order.
template<HasRawText Enum>
QList<Enum> allCases()
{
    QList<Enum> cases;
    for (const auto &entry : RawTexts<Enum>::all) {
        cases.append(entry.first);
    }
    return cases;
}
