#pragma once

#include <QByteArray>
#include <QString>

/// What came of one shell line. A failure is data here, never raised.
///
/// Texts are UTF-8 and stay bytes until a parser makes records of them: an output of 100 MB is held once.
struct CommandResult {
    static constexpr qint32 kTimedOut = 124;  ///< the time limit ended the command, as timeout(1) reports it
    static constexpr qint32 kNotRun = -1;     ///< no process ran
    static constexpr qint32 kSshFailed = 255; ///< ssh's own failure, ssh(1) EXIT STATUS

    QByteArray output; ///< standard output; empty if it is not valid UTF-8
    QByteArray error;  ///< standard error; empty if it is not valid UTF-8
    qint32 exitCode = kNotRun;
    QString command; ///< the shell line as given

    bool succeeded() const { return exitCode == 0; }

    bool operator==(const CommandResult &) const = default;
};
