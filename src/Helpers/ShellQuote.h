#pragma once

#include <QString>

/// The one home of shell quoting. Quoting follows POSIX.1-2017, XCU 2.2.2: between single quotes every character
/// stands for itself, and a single quote cannot occur.

/// `value` with each ' replaced by '\'' : what stands between the single quotes of a line.
QString quoteRule(const QString &value);

/// `value` as one word of a POSIX shell: between single quotes, by the quote rule.
QString shellQuoted(const QString &value);

/// `value` as one word of a POSIX shell, bare where that is safe: if it is not empty and consists of the letters and
/// digits of ASCII and _ @ % + = : , . / - only. Anything else stands between single quotes. For arguments, not for
/// the first word of a command: there a bare NAME=value is an assignment.
QString shellWord(const QString &value);
