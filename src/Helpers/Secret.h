#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Text conversions and disposal for passwords and passphrases.

/// The UTF-8 bytes of `text`, or nothing if it holds an unpaired surrogate: a secret is never altered silently.
std::optional<QByteArray> strictUtf8(const QString &text);

/// The text of `bytes`, or nothing unless they are UTF-8 through and through.
std::optional<QString> strictText(const QByteArray &bytes);

/// Overwrites the characters and empties the value. Best effort: only when nobody else shares the buffer, and
/// copies that were made on the way stay where they are.
void wipe(QByteArray &secret);
void wipe(QString &secret);
