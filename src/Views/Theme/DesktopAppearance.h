#pragma once

#include <QObject>
#include <QString>
#include <optional>

/// Whether the desktop wants dark applications, live: the key "color-scheme" in the namespace
/// "org.freedesktop.appearance" of org.freedesktop.portal.Settings on the session bus
/// (https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html): 1 means dark, 2
/// light, 0 no preference.
class DesktopAppearance : public QObject
{
    Q_OBJECT

public:
    explicit DesktopAppearance(QObject *parent = nullptr);
    ~DesktopAppearance() override;

    /// Connects to the bus on another thread and asks; never blocks. Without a bus or a portal the answer is light.
    void start();

    /// The last answer; nothing before the first one.
    std::optional<bool> prefersDark() const { return m_prefersDark; }

Q_SIGNALS:
    /// An answer that differs from the last one, or the first.
    void prefersDarkChanged(bool prefersDark);

private:
    void listen(const QString &connectionName);
    void set(bool prefersDark);

    std::optional<bool> m_prefersDark;
    QString m_connectionName;
};
