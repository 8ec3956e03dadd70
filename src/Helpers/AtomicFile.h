#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <system_error>

// Whole files, read and written so that a failure is told and never costs what was there before. An error's message()
// is the system's own words for it.

struct FileContents {
    QByteArray bytes;
    std::error_code error; ///< no_such_file_or_directory when there is none
};

/// Reads the whole of a regular file. Anything else (a directory, a pipe, a device) is an error and is not waited
/// for.
FileContents readRegularFile(const QString &path);

/// Puts `bytes` in the place of `path`: they go to a new file beside it with the mode 0600, which is flushed to the
/// disk and then renamed over the old one; the directory is flushed too. A symbolic link at `path` stays, and the
/// file it points to is replaced. After an error the old file is as it was.
std::error_code writeFileAtomically(const QString &path, QByteArrayView bytes);

/// Makes `path` and what is missing above it, each with the mode 0700. No error when it is there.
std::error_code makePrivateDirectories(const QString &path);

/// Renames a file, or what a symbolic link points to, to its own name with `suffix`, or with "-2", "-3" and so on
/// behind that when the name is taken; never over another file. The new path, or an empty text after an error.
QString setFileAside(const QString &path, const QString &suffix);
