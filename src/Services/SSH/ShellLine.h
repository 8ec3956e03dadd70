#pragma once

#include <QString>

/// A line for a server's shell, with what a log may tell of it. Any text is one.
struct ShellLine {
    ShellLine(QString text, bool isConfidential = false) // NOLINT(google-explicit-constructor): a text is a line
        : text(std::move(text))
        , isConfidential(isConfidential)
    {
    }

    /// `told`, which is (a part of) the line or of what it printed, as it may stand in a log.
    QString forLog(const QString &told) const { return isConfidential ? QStringLiteral("(confidential)") : told; }

    QString text;
    bool isConfidential; ///< holds a secret: neither the line nor what it prints comes into a log
};
