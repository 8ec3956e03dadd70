#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <optional>

// Every record of this folder, and a QList of servers, can be written as JSON and read back. A record is one object
// whose keys are its field names in their order. UUIDs are upper-case text (8-4-4-4-12), dates the seconds since
// 2001-01-01 00:00:00 UTC as a number, enumerations their raw text; an absent optional field is left out.

/// `record` as compact UTF-8 JSON. Empty when it holds a number that JSON cannot say (an infinity or a NaN); an
/// invalid date is written as the Unix epoch.
template<class Record>
QByteArray toJson(const Record &record);

/// The record that `json` says, or nothing, with the reason and its place in `failure`. Reading is strict: a missing
/// key of a field that is neither optional nor has a stored default, a value of another JSON type, a fraction or too
/// great a number for an integer, a key given twice, invalid UTF-8 or text after the value fail the whole. Unknown
/// keys are passed over, however deep they nest.
template<class Record>
std::optional<Record> fromJson(QByteArrayView json, QString *failure = nullptr);
