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

QString pathIn(const QString &directory)
{
    return directory + u"/defaults.json"_s;
}

QString described(const std::error_code &error)
{
    return QString::fromLocal8Bit(error.message().c_str());
}

} // namespace

UserDefaults::UserDefaults(const QString &directory, QObject *parent)
    : QObject(parent)
    , m_directory(directory)
    , m_isFrozen(!adopt(refreshed(pathIn(directory), {})))
{
}

UserDefaults::~UserDefaults()
{
    flush();
}

QString UserDefaults::defaultDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/tarnwell"_s;
}

QStringList UserDefaults::keys() const
{
    QStringList all;
    for (const DefaultsEntry &entry : m_content.entries) {
        all.append(entry.key);
    }
    return all;
}

bool UserDefaults::remove(const QString &key)
{
    join();
    if (m_content.entries.removeIf([&](const DefaultsEntry &entry) { return entry.key == key; }) > 0) {
        m_content.unsaved.insert(key);
    }
    m_makers.remove(key);
    return flush();
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
            return flush();
        }
        copyKey = key + u".damaged-%1"_s.arg(number);
    }
    return set(copyKey, damaged);
}

QString UserDefaults::notice()
{
    return std::exchange(m_notice, {});
}

UserDefaults::FileState UserDefaults::fileState(const QString &path)
{
    struct stat status;
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return {};
    }
    return {status.st_dev, status.st_ino, status.st_size,
            qint64{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

const DefaultsEntry *UserDefaults::find(const QString &key) const
{
    const auto entry = std::find_if(m_content.entries.begin(), m_content.entries.end(),
                                    [&](const DefaultsEntry &e) { return e.key == key; });
    return entry == m_content.entries.end() ? nullptr : &*entry;
}

bool UserDefaults::set(const QString &key, DefaultsValue value)
{
    join();
    m_makers.remove(key);
    const DefaultsEntry *entry = find(key);
    if (!entry || entry->value != value) {
        put(m_content.entries, key, std::move(value));
        m_content.unsaved.insert(key);
    }
    return flush();
}

void UserDefaults::setDataSoon(const QString &key, const std::function<QByteArray()> &make)
{
    m_makers.insert(key, make);
    if (!m_writing.valid()) {
        startWriting();
    }
}

bool UserDefaults::flush()
{
    join();
    return (m_content.unsaved.isEmpty() && m_makers.isEmpty()) || save();
}

// Puts the values of `content` that are still unsaved over those of `entries`.
void UserDefaults::putUnsaved(QList<DefaultsEntry> &entries, const Content &content)
{
    for (const QString &key : content.unsaved) {
        const auto isIt = [&](const DefaultsEntry &entry) { return entry.key == key; };
        const auto mine = std::ranges::find_if(content.entries, isIt);
        if (mine != content.entries.end()) {
            put(entries, key, mine->value);
        } else {
            entries.removeIf(isIt);
        }
    }
}

// Takes over what is in the file, under the values that are still unsaved. Not done when the file must not be
// replaced.
UserDefaults::Outcome UserDefaults::refreshed(const QString &path, Content content)
{
    Outcome outcome{.content = std::move(content)};
    const FileState state = fileState(path);
    const FileContents file = readRegularFile(path);
    if (file.error == std::errc::no_such_file_or_directory) {
        outcome.content.state = state;
        outcome.isDone = true;
        return outcome;
    }
    if (file.error) {
        outcome.failure =
            tr("The settings file %1 cannot be read (%2). It is left as it is, and changes are not saved.")
                .arg(path, described(file.error));
        return outcome;
    }
    std::optional<QList<DefaultsEntry>> entries = readDefaults(file.bytes);
    if (!entries) {
        const QString aside = setFileAside(path, u".damaged"_s);
        if (aside.isEmpty()) {
            outcome.failure = tr("The settings file %1 is damaged and cannot be set aside. It is left as it is, and "
                                 "changes are not saved.")
                                  .arg(path);
            return outcome;
        }
        outcome.news = tr("The settings file was damaged. It was set aside as %1.").arg(aside);
        outcome.content.state = {};
        outcome.isDone = true;
        return outcome;
    }
    putUnsaved(*entries, outcome.content);
    outcome.content.entries = *std::move(entries);
    outcome.content.state = state;
    outcome.isDone = true;
    return outcome;
}

UserDefaults::Outcome UserDefaults::written(const QString &directory, Content content)
{
    const QString path = pathIn(directory);
    Outcome outcome{.content = std::move(content), .isDone = true};
    std::error_code error = makePrivateDirectories(directory);
    if (!error) {
        const DirectoryLock lock(directory);
        if (fileState(path) != outcome.content.state) {
            outcome = refreshed(path, std::move(outcome.content));
        }
        if (!outcome.isDone) {
            return outcome;
        }
        error = writeFileAtomically(path, writeDefaults(outcome.content.entries));
        if (!error) {
            outcome.content.unsaved.clear();
            outcome.content.state = fileState(path);
            return outcome;
        }
    }
    outcome.isDone = false;
    outcome.failure =
        tr("The settings cannot be saved to %1 (%2). They hold until the program ends, and each change tries again.")
            .arg(path, described(error));
    return outcome;
}

UserDefaults::Outcome UserDefaults::writtenWith(const Makers &makers, const QString &directory, Content content)
{
    for (const auto &[key, make] : makers.asKeyValueRange()) {
        if (const QByteArray bytes = make(); !bytes.isEmpty()) {
            put(content.entries, key, bytes);
            content.unsaved.insert(key);
        }
    }
    return content.unsaved.isEmpty() ? Outcome{.content = std::move(content), .isDone = true}
                                     : written(directory, std::move(content));
}

bool UserDefaults::save()
{
    if (m_isFrozen) {
        return false;
    }
    return adopt(writtenWith(std::exchange(m_makers, {}), m_directory, m_content));
}

void UserDefaults::startWriting()
{
    if (m_isFrozen) {
        return;
    }
    auto write = [this, makers = std::exchange(m_makers, {}), directory = m_directory,
                  content = m_content]() mutable {
        Outcome outcome = writtenWith(makers, directory, std::move(content));
        makers.clear(); // what they own goes here and not where somebody waits
        QMetaObject::invokeMethod(this, &UserDefaults::writingEnded, Qt::QueuedConnection);
        return outcome;
    };
    // Where no thread can be had, the next flush() does it.
    m_writing = std::async(std::launch::async | std::launch::deferred, std::move(write));
}

// Nothing was set in between but by way of makers, so that the outcome is the whole content.
void UserDefaults::join()
{
    if (m_writing.valid()) {
        adopt(m_writing.get());
    }
}

void UserDefaults::writingEnded()
{
    join();
    if (!m_makers.isEmpty() && !m_writing.valid()) {
        startWriting();
    }
}

bool UserDefaults::adopt(Outcome outcome)
{
    m_content = std::move(outcome.content);
    if (outcome.isDone) {
        m_failure.clear();
    }
    if (!outcome.news.isEmpty()) {
        tell(outcome.news);
    }
    if (!outcome.failure.isEmpty()) {
        tellFailure(outcome.failure);
    }
    return outcome.isDone;
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
