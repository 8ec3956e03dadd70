#pragma once

#include "Helpers/ShellQuote.h"
#include "Services/Commands/SSHCommand.h"

/// The remote lines about files. Paths may hold any character.

/// A folder, hidden entries too, in the long form of ls(1).
class ListFilesCommand : public BaseSSHCommand
{
public:
    explicit ListFilesCommand(const QString &path)
        : BaseSSHCommand({.description = QStringLiteral("List files in '%1'").arg(path),
                          .category = CommandCategory::Files,
                          .commandString = QStringLiteral("ls -la '%1' 2>/dev/null").arg(quoteRule(path))})
        , path(path)
    {
    }

    const QString path;
};

/// Removes a file, or a folder with all that it holds.
class DeleteFileCommand : public BaseSSHCommand
{
public:
    explicit DeleteFileCommand(const QString &path)
        : BaseSSHCommand({.description = QStringLiteral("Delete '%1'").arg(path),
                          .category = CommandCategory::Files,
                          .commandString = QStringLiteral("rm -rf '%1'").arg(quoteRule(path))})
        , path(path)
    {
    }

    const QString path;
};

/// The first 51,200 bytes of a file; `maxLines` counts only where head(1) knows no -c.
class ReadFileCommand : public BaseSSHCommand
{
public:
    ReadFileCommand(const QString &path, qint64 maxLines)
        : BaseSSHCommand(
              {.description = QStringLiteral("Read file '%1' (max %2 lines)").arg(path, QString::number(maxLines)),
               .category = CommandCategory::Files,
               .commandString = QStringLiteral("head -c 51200 '%1' 2>/dev/null || head -n %2 '%1' 2>/dev/null")
                                    .arg(quoteRule(path), QString::number(maxLines))})
        , path(path)
        , maxLines(maxLines)
    {
    }

    const QString path;
    const qint64 maxLines;
};

/// Writes a text as it stands into a file, as a here-document whose marker no text can hold by chance. What is
/// written ends in a line feed.
class WriteTempFileCommand : public BaseSSHCommand
{
public:
    WriteTempFileCommand(const QString &content, const QString &tempFile)
        : WriteTempFileCommand(content, tempFile,
                               QStringLiteral("CRON_EOF_") +
                                   QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().remove(u'-'))
    {
    }

    const QString content;
    const QString tempFile;

private:
    // The quoted marker keeps the shell from expanding anything in the content.
    WriteTempFileCommand(const QString &content, const QString &tempFile, const QString &marker)
        : BaseSSHCommand(
              {.description = QStringLiteral("Write temp file"),
               .category = CommandCategory::Files,
               .commandString = QStringLiteral("cat > %1 << '%2'\n%3\n%2").arg(shellWord(tempFile), marker, content)})
        , content(content)
        , tempFile(tempFile)
    {
    }
};

/// Removes a file that WriteTempFileCommand made.
class RemoveTempFileCommand : public BaseSSHCommand
{
public:
    explicit RemoveTempFileCommand(const QString &tempFile)
        : BaseSSHCommand({.description = QStringLiteral("Remove temp file"),
                          .category = CommandCategory::Files,
                          .commandString = QStringLiteral("rm -f %1").arg(shellWord(tempFile))})
        , tempFile(tempFile)
    {
    }

    const QString tempFile;
};
