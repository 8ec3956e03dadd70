#pragma once

#include "Models/ProcessInfo.h"

#include <QByteArrayView>
#include <QList>

/// Reads what ProcessListCommand prints: `ps aux`, one heading and one line a process.
struct ProcessParser {
    /// More processes than this are not read.
    static constexpr qsizetype kMostProcesses = 200'000;

    /// The processes in the order of the output. `command` is the whole command with its arguments, joined by single
    /// blanks; numbers stay as printed. The first line, and lines that are no process, are passed over.
    static QList<ProcessInfo> parse(QByteArrayView output);
};
