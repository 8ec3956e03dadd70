#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>

class RuntimeDirectory;

/// One running program for each profile: who comes second asks the first to raise its window, and ends.
///
/// The first holds an exclusive lock (flock(2)) on a file in the runtime directory, which the kernel releases however
/// it ends, and listens on a socket beside it. Both belong to the user alone, as the directory does.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    enum class Claim {
        First,      ///< also where the runtime directory was refused: then nothing can be shared
        HandedOver, ///< another one runs with this profile and has been told
        NoAnswer    ///< another one runs with this profile and does not answer
    };

    /// `profile` is the absolute path of the profile's directory, which need not exist.
    SingleInstance(const RuntimeDirectory &directory, const QString &profile);
    ~SingleInstance() override;

    /// Before anything of the profile is read. `activationToken` is what the desktop gave this start so that a window
    /// may come to the front (xdg-activation). Waits for one that starts or ends at this moment.
    Claim claim(const QByteArray &activationToken, std::chrono::milliseconds patience = std::chrono::seconds(5));

    /// The first one hears the others from now on; needs an event loop. Those who came earlier have waited.
    void listen();

Q_SIGNALS:
    /// Another start wants the window, with its token, which may be empty.
    void raiseRequested(const QByteArray &activationToken);

private:
    bool lock();
    bool handOver(const QByteArray &activationToken) const;
    void accept();
    void answer(int client);

    int m_directory = -1;
    QByteArray m_name; // of both files, without their endings
    int m_lock = -1;
    int m_socket = -1;
};
