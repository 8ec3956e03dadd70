#pragma once

#include <QString>

/// Text of a server, made ready to be shown or copied as one line.
namespace DisplayText
{

/// `text` on one line: each control character, line end and override of the writing direction becomes a blank.
QString oneLine(const QString &text);

} // namespace DisplayText
