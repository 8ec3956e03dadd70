#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <optional>
#include <variant>

/// JSON of a kind that the defaults don't know, kept as text.
struct OtherJson {
    QByteArray text;

    bool operator==(const OtherJson &) const = default;
};

using DefaultsValue = std::variant<qint64, bool, QString, QByteArray, OtherJson>;

struct DefaultsEntry {
    QString key;
    DefaultsValue value;

    bool operator==(const DefaultsEntry &) const = default;
};

/// The entries of a defaults file in their order, or nothing if `json` is no JSON object. Integers of 64 bits,
/// booleans and texts are themselves, {"data":"<base64>"} is bytes, all else is OtherJson. A key that stands twice
/// has its last value.
std::optional<QList<DefaultsEntry>> readDefaults(QByteArrayView json);

/// The file's text, one entry a line.
QByteArray writeDefaults(const QList<DefaultsEntry> &entries);
