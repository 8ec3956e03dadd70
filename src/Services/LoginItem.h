#pragma once

#include <QString>
#include <QStringList>

/// Starts the program at login: an entry in the autostart directory, by freedesktop.org's rules for the autostart of
/// applications, version 0.5.
class LoginItem
{
public:
    /// `command` is the program's absolute path and its arguments.
    LoginItem(const QString &autostartDirectory, const QStringList &command);

    /// "autostart" in the XDG configuration directory.
    static QString defaultDirectory();

    /// Writes or removes the entry. A failure is only logged: the preference stays as the operator set it.
    void setEnabled(bool isEnabled) const;

    bool isEnabled() const;

    /// `command` as the value of an Exec key, by the Desktop Entry Specification 1.5, "The Exec key".
    static QString execValue(const QStringList &command);

private:
    QString m_path;
    QStringList m_command;
};
