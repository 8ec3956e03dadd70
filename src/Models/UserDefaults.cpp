#include "Models/UserDefaults.h"

#include "Helpers/AtomicFile.h"
#include "Helpers/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QThread>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

// Held while the file is read and replaced, so that two programs on one directory don't lose each other's keys. Where
// it cannot be had within a moment, or the filesystem has no locks, the write goes on without it.
class DirectoryLock
{
public:
    explicit DirectoryLock(const QString &directory)
        : m_fd(::open(QFile::encodeName(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        constexpr int kAttempts = 50;
        constexpr unsigned long kPauseMs = 2;
        for (int i = 0; m_fd >= 0 && ::flock(m_fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK && i < kAttempts;
             ++i) {
            QThread::msleep(kPauseMs);
        }
    }

    DirectoryLock(const DirectoryLock &) = delete;
    DirectoryLock &operator=(const DirectoryLock &) = delete;

    ~DirectoryLock()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }

private:
    int m_fd;
};

QString described(const std::error_code &error)
{
    return QString::fromLocal8Bit(error.message().c_str());
}

} // namespace

UserDefaults::UserDefaults(const QString &directory, QObject *parent)
    : QObject(parent)
    , m_directory(directory)
    , m_isFrozen(!refresh())
{
}

QString UserDefaults::defaultDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/tarnwell"_s;
}

QStringList UserDefaults::keys() const
{
    QStringList all;
    for (const DefaultsEntry &entry : m_entries) {
        all.append(entry.key);
    }
    return all;
}

bool UserDefaults::remove(const QString &key)
{
    if (m_entries.removeIf([&](const DefaultsEntry &entry) { return entry.key == key; }) > 0) {
        m_unsaved.insert(key);
    }
    return m_unsaved.isEmpty() || save();
}

bool UserDefaults::keepDamagedCopy(const QString &key)
{
    const DefaultsEntry *entry = find(key);
    if (!entry) {
        return true;
    }
    const DefaultsValue damaged = entry->value;
    QString copyKey = key + u".damaged"_s;
    for (int number = 2; const DefaultsEntry *earlier = find(copyKey); ++number) {
        if (earlier->value == damaged) {
            return m_unsaved.isEmpty() || save();
        }
        copyKey = key + u".damaged-%1"_s.arg(number);
    }
    return set(copyKey, damaged);
}

QString UserDefaults::notice()
{
    return std::exchange(m_notice, {});
}

QString UserDefaults::path() const
{
    return m_directory + u"/defaults.json"_s;
}

UserDefaults::FileState UserDefaults::fileState() const
{
    struct stat status;
    if (::stat(QFile::encodeName(path()).constData(), &status) != 0) {
        return {};
    }
    return {status.st_dev, status.st_ino, status.st_size,
            qint64{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

const DefaultsEntry *UserDefaults::find(const QString &key) const
{
    const auto entry =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const DefaultsEntry &e) { return e.key == key; });
    return entry == m_entries.end() ? nullptr : &*entry;
}

bool UserDefaults::set(const QString &key, DefaultsValue value)
{
    const DefaultsEntry *entry = find(key);
    if (entry && entry->value == value && m_unsaved.isEmpty()) {
        return true;
    }
    put(m_entries, key, std::move(value));
    m_unsaved.insert(key);
    return save();
}

// Takes over what is in the file, under the values that are still unsaved. False when the file must not be replaced.
bool UserDefaults::refresh()
{
    const FileState state = fileState();
    const FileContents file = readRegularFile(path());
    if (file.error == std::errc::no_such_file_or_directory) {
        m_state = state;
        return true;
    }
    if (file.error) {
        tellFailure(tr("The settings file %1 cannot be read (%2). It is left as it is, and changes are not saved.")
                        .arg(path(), described(file.error)));
        return false;
    }
    std::optional<QList<DefaultsEntry>> entries = readDefaults(file.bytes);
    if (!entries) {
        const QString aside = setFileAside(path(), u".damaged"_s);
        if (aside.isEmpty()) {
            tellFailure(
                tr("The settings file %1 is damaged and cannot be set aside. It is left as it is, and changes "
                   "are not saved.")
                    .arg(path()));
            return false;
        }
        tell(tr("The settings file was damaged. It was set aside as %1.").arg(aside));
        m_state = {};
        return true;
    }
    for (const QString &key : std::as_const(m_unsaved)) {
        if (const DefaultsEntry *mine = find(key)) {
            put(*entries, key, mine->value);
        } else {
            entries->removeIf([&](const DefaultsEntry &entry) { return entry.key == key; });
        }
    }
    m_entries = *std::move(entries);
    m_state = state;
    return true;
}

bool UserDefaults::save()
{
    if (m_isFrozen) {
        return false;
    }
    std::error_code error = makePrivateDirectories(m_directory);
    if (!error) {
        const DirectoryLock lock(m_directory);
        if (fileState() != m_state && !refresh()) {
            return false;
        }
        error = writeFileAtomically(path(), writeDefaults(m_entries));
        if (!error) {
            m_unsaved.clear();
            m_state = fileState();
            m_failure.clear();
            return true;
        }
    }
    tellFailure(
        tr("The settings cannot be saved to %1 (%2). They hold until the program ends, and each change tries again.")
            .arg(path(), described(error)));
    return false;
}

void UserDefaults::tell(const QString &sentence)
{
    Log::warning(sentence);
    m_notice += m_notice.isEmpty() ? sentence : u' ' + sentence;
    Q_EMIT noticeAvailable();
}

void UserDefaults::tellFailure(const QString &sentence)
{
    if (std::exchange(m_failure, sentence) != sentence) {
        tell(sentence);
    }
}

void UserDefaults::put(QList<DefaultsEntry> &entries, const QString &key, DefaultsValue value)
{
    for (DefaultsEntry &entry : entries) {
        if (entry.key == key) {
            entry.value = std::move(value);
            return;
        }
    }
    entries.append({key, std::move(value)});
}
