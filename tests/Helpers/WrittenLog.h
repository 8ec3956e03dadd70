#pragma once

#include <QString>
#include <QTemporaryFile>
#include <cstdio>
#include <unistd.h>

/// What `action` writes to standard error, the sink of the log.
template<class Action>
QString written(Action action)
{
    QTemporaryFile file;
    if (!file.open()) {
        return QStringLiteral("no file");
    }
    std::fflush(stderr);
    const int saved = ::dup(STDERR_FILENO);
    if (saved < 0) {
        return QStringLiteral("no descriptor");
    }
    ::dup2(file.handle(), STDERR_FILENO);
    action();
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    file.seek(0);
    return QString::fromUtf8(file.readAll());
}
