#pragma once

#include <QString>
#include <QStringList>
#include <optional>

/// What the program was asked to do.
struct CommandLine {
    QString profileDirectory;               ///< absolute; empty for the operator's own
    std::optional<QString> renderDirectory; ///< absolute: write pictures of the window there, and quit
    bool measuresStart = false;             ///< print the cost of the start, and quit

    /// The directory of the settings: the one that was given, or the operator's own.
    QString profile() const;

    /// The window is opened for a person to work with.
    bool isOrdinary() const { return !renderDirectory && !measuresStart; }

    /// Text to print instead of starting, and the exit code then.
    QString message;
    std::optional<int> exitCode;

    /// As main got them. Without a QCoreApplication, which a start would then make a second time.
    static CommandLine parse(int argc, char **argv);
};
