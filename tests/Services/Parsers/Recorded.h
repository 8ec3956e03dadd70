#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

/// What a command printed on one of the full hosts, byte for byte.
inline QByteArray recorded(const char *name)
{
    QFile file(QStringLiteral(TARNWELL_RECORDED "/") + QString::fromLatin1(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
