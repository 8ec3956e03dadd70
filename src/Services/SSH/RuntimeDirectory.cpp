#include "Services/SSH/RuntimeDirectory.h"

#include "Helpers/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

QString tr(const char *text)
{
    return QCoreApplication::translate("RuntimeDirectory", text);
}

constexpr auto kSocketFolder = "tw_ssh"_L1;

// Another program may hold the lock exclusively while it removes leftovers; that takes milliseconds.
constexpr int kLockAttempts = 100;
constexpr unsigned long kLockPauseMs = 10;

// Nobody else can rename or replace an entry of such a directory: it is root's or ours, and who else may write in it
// is held by the sticky bit.
bool isSafeParent(const struct stat &s)
{
    const bool ours = s.st_uid == geteuid() || s.st_uid == 0;
    const bool openToOthers = (s.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    return S_ISDIR(s.st_mode) && ours && (!openToOthers || (s.st_mode & S_ISVTX) != 0);
}

// Makes the directory and opens it. On failure -1, and `reason` says why it can't be trusted.
int openPrivateDirectory(const QString &path, QString &reason)
{
    const QByteArray name = QFile::encodeName(path);
    if (mkdir(name.constData(), S_IRWXU) != 0 && errno != EEXIST) {
        reason = tr("cannot be made: %1").arg(qt_error_string(errno));
        return -1;
    }
    const int fd = ::open(name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        const int cause = errno;
        struct stat entry;
        const bool isLink = lstat(name.constData(), &entry) == 0 && S_ISLNK(entry.st_mode);
        const QString why =
            cause == ENOTDIR ? tr("is not a directory") : tr("cannot be opened: %1").arg(qt_error_string(cause));
        reason = isLink ? tr("is a symbolic link") : why;
        return -1;
    }
    struct stat s;
    if (fstat(fd, &s) != 0 || s.st_uid != geteuid()) {
        reason = tr("belongs to another user");
    } else if ((s.st_mode & ALLPERMS) != S_IRWXU && fchmod(fd, S_IRWXU) != 0) {
        reason = tr("is open to others: %1").arg(qt_error_string(errno));
    } else {
        return fd;
    }
    close(fd);
    return -1;
}

bool lockFile(int fd, int operation)
{
    int result = flock(fd, operation | LOCK_NB);
    while (result != 0 && errno == EINTR) {
        result = flock(fd, operation | LOCK_NB);
    }
    return result == 0;
}

bool isOlderThan(const QString &path, std::chrono::seconds age)
{
    struct stat s;
    return lstat(QFile::encodeName(path).constData(), &s) == 0 && std::time(nullptr) - s.st_mtime > age.count();
}

} // namespace

QString RuntimeDirectory::standardPath()
{
    const QByteArray base = qgetenv("XDG_RUNTIME_DIR");
    struct stat s;
    struct statvfs system;
    const bool usable = base.startsWith('/') && stat(base.constData(), &s) == 0 && s.st_uid == geteuid() &&
                        isSafeParent(s) && statvfs(base.constData(), &system) == 0 &&
                        (system.f_flag & ST_NOEXEC) == 0;
    if (usable) {
        return QDir::cleanPath(QFile::decodeName(base)) + u"/tarnwell"_s;
    }
    return u"/tmp/tarnwell-"_s + QString::number(geteuid());
}

RuntimeDirectory::RuntimeDirectory(const QString &path)
    : m_path(path)
{
    open();
}

RuntimeDirectory::~RuntimeDirectory()
{
    release();
}

void RuntimeDirectory::release()
{
    for (int *const fd : {&m_lock, &m_directory}) {
        if (*fd >= 0) {
            close(*fd);
            *fd = -1;
        }
    }
}

void RuntimeDirectory::refuse(const QString &reason)
{
    m_refusal = tr("The directory for temporary files %1 %2.").arg(m_path, reason);
    Log::warning(m_refusal, Log::Category::Ssh);
    release();
}

void RuntimeDirectory::open()
{
    m_refusal.clear();
    struct stat parent;
    const QString parentPath = QFileInfo(m_path).path();
    if (stat(QFile::encodeName(parentPath).constData(), &parent) != 0 || !isSafeParent(parent)) {
        refuse(tr("stands in a directory where others could replace it"));
        return;
    }
    QString reason;
    m_directory = openPrivateDirectory(m_path, reason);
    if (m_directory < 0) {
        refuse(reason);
        return;
    }
    lock();
}

void RuntimeDirectory::lock()
{
    m_lock = openat(m_directory, "lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (m_lock < 0) {
        refuse(tr("takes no lock: %1").arg(qt_error_string(errno)));
        return;
    }
    m_alone = lockFile(m_lock, LOCK_EX);
    removeLeftovers();
    for (int i = 0; !lockFile(m_lock, LOCK_SH); ++i) {
        if (i == kLockAttempts) {
            Log::warning(u"Another program holds the lock in %1"_s.arg(m_path), Log::Category::Ssh);
            return;
        }
        QThread::msleep(kLockPauseMs);
    }
}

void RuntimeDirectory::removeLeftovers() const
{
    const QDir::Filters everything = QDir::Files | QDir::System | QDir::Hidden;
    const QDir here(m_path);
    for (const QString &name : here.entryList({kAskpassPattern}, everything)) {
        if (m_alone || isOlderThan(here.filePath(name), kAskpassLifetime)) {
            QFile::remove(here.filePath(name));
        }
    }
    if (m_alone && !QFileInfo(here.filePath(kSocketFolder)).isSymLink()) {
        const QDir sockets(here.filePath(kSocketFolder));
        for (const QString &name : sockets.entryList({u"ssh_*"_s}, everything)) {
            QFile::remove(sockets.filePath(name));
        }
    }
}

bool RuntimeDirectory::ensure()
{
    struct stat held;
    struct stat found;
    const bool same = m_directory >= 0 && fstat(m_directory, &held) == 0 &&
                      lstat(QFile::encodeName(m_path).constData(), &found) == 0 && held.st_dev == found.st_dev &&
                      held.st_ino == found.st_ino;
    if (!same) {
        release();
        open();
    }
    return available();
}

QString RuntimeDirectory::controlPathDirectory() const
{
    return m_path + u'/' + kSocketFolder + u'/';
}

bool RuntimeDirectory::ensureControlPathDirectory()
{
    if (!ensure()) {
        return false;
    }
    QString reason;
    const int fd = openPrivateDirectory(m_path + u'/' + kSocketFolder, reason);
    if (fd < 0) {
        Log::warning(u"The directory for control sockets %1 %2."_s.arg(controlPathDirectory(), reason),
                     Log::Category::Ssh);
        return false;
    }
    close(fd);
    return true;
}

void RuntimeDirectory::removeControlPathDirectory()
{
    if (available()) {
        rmdir(QFile::encodeName(controlPathDirectory()).constData());
    }
}
