#include "App/SingleInstance.h"

#include "Helpers/Log.h"
#include "Services/SSH/RuntimeDirectory.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kAnswerSeconds = 2;
constexpr unsigned long kPauseMs = 20;
constexpr qsizetype kGreatestToken = 1024;
constexpr QByteArrayView kRaise("raise ");
constexpr QByteArrayView kDone("raised\n");

// The same for every way to write one directory.
QByteArray nameOf(const QString &profile)
{
    const QString canonical = QFileInfo(profile).canonicalFilePath();
    const QByteArray path = QFile::encodeName(canonical.isEmpty() ? profile : canonical);
    return "instance-" + QCryptographicHash::hash(path, QCryptographicHash::Sha1).toHex().left(16);
}

// A socket's address has room for 107 bytes, however long the directory's path is.
sockaddr_un addressOf(int directory, const QByteArray &name)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(directory) + '/' + name + ".socket";
    std::memcpy(address.sun_path, path.constData(), std::min<size_t>(path.size(), sizeof address.sun_path - 1));
    return address;
}

int openSocket(int flags)
{
    return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
}

bool isOwn(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

// Whoever is stuck keeps nobody waiting for long.
void limitWaits(int socket)
{
    const timeval limit{kAnswerSeconds, 0};
    for (const int option : {SO_SNDTIMEO, SO_RCVTIMEO}) { // the first one is connect's limit as well, unix(7)
        setsockopt(socket, SOL_SOCKET, option, &limit, sizeof limit);
    }
}

} // namespace

SingleInstance::SingleInstance(const RuntimeDirectory &directory, const QString &profile)
    : m_name(nameOf(profile))
{
    if (directory.available()) {
        m_directory =
            ::open(QFile::encodeName(directory.path()).constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }
}

SingleInstance::~SingleInstance()
{
    if (m_socket >= 0) {
        unlinkat(m_directory, (m_name + ".socket").constData(), 0); // while the lock is held
        close(m_socket);
    }
    for (const int fd : {m_lock, m_directory}) {
        if (fd >= 0) {
            close(fd);
        }
    }
}

SingleInstance::Claim SingleInstance::claim(const QByteArray &activationToken, std::chrono::milliseconds patience)
{
    const QDeadlineTimer deadline(patience);
    do {
        if (m_directory < 0 || lock()) {
            return Claim::First;
        }
        if (handOver(activationToken)) {
            return Claim::HandedOver;
        }
        QThread::msleep(kPauseMs);
    } while (!deadline.hasExpired());
    return Claim::NoAnswer;
}

bool SingleInstance::lock()
{
    if (m_lock < 0) {
        m_lock = openat(m_directory, (m_name + ".lock").constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC,
                        S_IRUSR | S_IWUSR);
    }
    if (m_lock < 0) {
        Log::warning(u"Cannot tell whether this profile is in use: "_s + qt_error_string(errno));
        return true;
    }
    return flock(m_lock, LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR);
}

bool SingleInstance::handOver(const QByteArray &activationToken) const
{
    const int fd = openSocket(0);
    if (fd < 0) {
        return false;
    }
    limitWaits(fd);
    const sockaddr_un address = addressOf(m_directory, m_name);
    const QByteArray line = kRaise.toByteArray() + activationToken.left(kGreatestToken).replace('\n', ' ') + '\n';
    QByteArray reply(kDone.size(), '\0');
    const bool isDone =
        ::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 && isOwn(fd) &&
        send(fd, line.constData(), static_cast<size_t>(line.size()), MSG_NOSIGNAL) == line.size() &&
        recv(fd, reply.data(), static_cast<size_t>(reply.size()), MSG_WAITALL) == kDone.size() && reply == kDone;
    close(fd);
    return isDone;
}

void SingleInstance::listen()
{
    if (m_lock < 0) {
        return;
    }
    unlinkat(m_directory, (m_name + ".socket").constData(), 0); // one of a run that crashed
    m_socket = openSocket(SOCK_NONBLOCK);
    const sockaddr_un address = addressOf(m_directory, m_name);
    if (m_socket < 0 || bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(m_socket, 4) != 0) {
        Log::warning(u"A second start cannot reach this one: "_s + qt_error_string(errno));
        return;
    }
    auto *notifier = new QSocketNotifier(m_socket, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &SingleInstance::accept);
}

void SingleInstance::accept()
{
    const int client = accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client < 0) {
        return;
    }
    if (!isOwn(client)) {
        close(client);
        return;
    }
    auto *notifier = new QSocketNotifier(client, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier, client] {
        notifier->setEnabled(false);
        notifier->deleteLater();
        answer(client);
    });
}

// The line is short enough to arrive as a whole.
void SingleInstance::answer(int client)
{
    QByteArray line(kRaise.size() + kGreatestToken + 1, '\0');
    line.truncate(std::max<ssize_t>(recv(client, line.data(), static_cast<size_t>(line.size()), 0), 0));
    const bool isRequest = line.startsWith(kRaise) && line.endsWith('\n');
    if (isRequest) {
        send(client, kDone.data(), static_cast<size_t>(kDone.size()), MSG_NOSIGNAL);
    }
    close(client);
    if (isRequest) {
        Q_EMIT raiseRequested(line.mid(kRaise.size()).chopped(1));
    }
}
