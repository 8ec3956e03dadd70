#pragma once

#include <QString>

/// The one home of shell quoting. Quoting follows POSIX.1-2017, XCU 2.2.2: between single quotes every character
/// stands for itself, and a single quote cannot occur.

/// `value` with each ' replaced by '\'' : what stands between the single quotes of a line.
QString quoteRule(const QString &value);

/// `value` as one word of a POSIX shell: between single quotes, by the quote rule.
QString shellQuoted(const QString &value);
