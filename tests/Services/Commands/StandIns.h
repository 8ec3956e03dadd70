#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// Stand-ins for tools that must not do their work here. Each notes its name and arguments, and what it reads from
/// its standard input where it is one that reads; sudo runs the rest of its line.
class StandIns
{
public:
    explicit StandIns(const QStringList &names)
    {
        QFile tool(m_directory.filePath(QStringLiteral("tool")));
        if (!tool.open(QIODevice::WriteOnly)) {
            return;
        }
        // 0x1f stands between arguments, 0x1e behind a call.
        tool.write("#!/bin/dash\n"
                   "name=${0##*/}\n"
                   "{ printf '%s' \"$name\"; for a in \"$@\"; do printf '\\037%s' \"$a\"; done; } >>\"$CALLS.$$\"\n"
                   "case $name in tee|chpasswd) printf '\\037<' >>\"$CALLS.$$\"; cat >>\"$CALLS.$$\";; esac\n"
                   "printf '\\036' >>\"$CALLS.$$\"; cat \"$CALLS.$$\" >>\"$CALLS\"; rm \"$CALLS.$$\"\n"
                   "case $name in sudo) while [ \"${1#-}\" != \"$1\" ]; do shift; done; exec \"$@\";; esac\n");
        tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        for (const QString &name : names) {
            QFile::link(QStringLiteral("tool"), m_directory.filePath(name));
        }
    }

    /// Runs a line in `shell`, within a folder of its own, with the stand-ins before the system's tools. Calls are
    /// "name|argument|argument".
    QStringList calls(const QString &shell, const QString &line)
    {
        const QString note = m_directory.filePath(QStringLiteral("calls"));
        QFile::remove(note);
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PATH"), m_directory.path() + QStringLiteral(":/usr/bin:/bin"));
        environment.insert(QStringLiteral("CALLS"), note);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_work.path());
        process.start(shell, {QStringLiteral("-c"), line});
        process.closeWriteChannel();
        process.waitForFinished();
        output = process.readAllStandardOutput();
        exitCode = process.exitCode();
        QFile file(note);
        QStringList calls;
        if (file.open(QIODevice::ReadOnly)) {
            calls =
                QString::fromUtf8(file.readAll()).replace(QChar(0x1f), u'|').split(QChar(0x1e), Qt::SkipEmptyParts);
        }
        return calls;
    }

    QByteArray output;
    int exitCode = -1;

private:
    QTemporaryDir m_directory;
    QTemporaryDir m_work;
};
