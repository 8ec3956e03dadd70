#include "Helpers/AtomicFile.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

class FileDescriptor
{
public:
    explicit FileDescriptor(int fd)
        : m_fd(fd)
    {
    }

    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    ~FileDescriptor()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }

    bool isOpen() const { return m_fd >= 0; }

    int get() const { return m_fd; }

private:
    int m_fd;
};

// Where a write to `path` has to go: the end of its chain of links, which itself need not exist.
QString endOfLinks(const QString &path)
{
    constexpr int kMostLinks = 40; // as the kernel's own limit, path_resolution(7)
    QFileInfo info(path);
    for (int i = 0; i < kMostLinks && info.isSymLink(); ++i) {
        info.setFile(info.symLinkTarget());
    }
    return info.absoluteFilePath();
}

std::error_code writeAll(int fd, QByteArrayView bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), static_cast<size_t>(bytes.size()));
        if (written < 0 && errno != EINTR) {
            return lastError();
        }
        bytes = bytes.sliced(std::max<qsizetype>(written, 0));
    }
    return ::fsync(fd) == 0 ? std::error_code() : lastError();
}

// Best effort: a filesystem that cannot flush a directory has the new file all the same.
void flushDirectoryOf(const QString &path)
{
    const FileDescriptor directory(
        ::open(QFile::encodeName(QFileInfo(path).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) {
        ::fsync(directory.get());
    }
}

// A rename that fails with EEXIST where the name is taken; not every filesystem can do it in one step.
int renameToFreeName(const QByteArray &from, const QByteArray &to)
{
    const int result = ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE);
    if (result == 0 || (errno != EINVAL && errno != ENOSYS)) {
        return result;
    }
    struct stat existing;
    if (::lstat(to.constData(), &existing) == 0) {
        errno = EEXIST;
        return -1;
    }
    return ::rename(from.constData(), to.constData());
}

} // namespace

FileContents readRegularFile(const QString &path)
{
    FileContents contents;
    const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status;
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
        contents.error = lastError();
        return contents;
    }
    if (!S_ISREG(status.st_mode)) {
        contents.error =
            std::make_error_code(S_ISDIR(status.st_mode) ? std::errc::is_a_directory : std::errc::invalid_argument);
        return contents;
    }
    constexpr qsizetype kChunk = 65536; // what is read beyond the size that the file had when it was opened
    qsizetype size = 0;
    contents.bytes.resize(static_cast<qsizetype>(status.st_size) + 1);
    for (;;) {
        if (size == contents.bytes.size()) {
            contents.bytes.resize(size + kChunk);
        }
        const ssize_t count =
            ::read(file.get(), contents.bytes.data() + size, static_cast<size_t>(contents.bytes.size() - size));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            contents.error = lastError();
            contents.bytes.clear();
            return contents;
        }
        if (count == 0) {
            break;
        }
        size += count;
    }
    contents.bytes.truncate(size);
    return contents;
}

std::error_code writeFileAtomically(const QString &path, QByteArrayView bytes)
{
    const QString target = endOfLinks(path);
    QByteArray temporary = QFile::encodeName(target) + ".XXXXXX";
    std::error_code error;
    {
        const FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC)); // with the mode 0600
        if (!file.isOpen()) {
            return lastError();
        }
        error = writeAll(file.get(), bytes);
    }
    if (!error && ::rename(temporary.constData(), QFile::encodeName(target).constData()) != 0) {
        error = lastError();
    }
    if (error) {
        ::unlink(temporary.constData());
        return error;
    }
    flushDirectoryOf(target);
    return {};
}

std::error_code makePrivateDirectories(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    if (::mkdir(name.constData(), S_IRWXU) == 0) {
        return {};
    }
    const QString parent = QFileInfo(path).path();
    if (errno == ENOENT && parent != path) {
        if (const std::error_code error = makePrivateDirectories(parent)) {
            return error;
        }
        if (::mkdir(name.constData(), S_IRWXU) == 0) {
            return {};
        }
    }
    if (errno == EEXIST) {
        return QFileInfo(path).isDir() ? std::error_code() : std::make_error_code(std::errc::not_a_directory);
    }
    return lastError();
}

QString setFileAside(const QString &path, const QString &suffix)
{
    constexpr int kMostNames = 1000;
    const QString from = endOfLinks(path);
    for (int number = 1; number <= kMostNames; ++number) {
        const QString to = from + suffix + (number == 1 ? QString() : u"-%1"_s.arg(number));
        if (renameToFreeName(QFile::encodeName(from), QFile::encodeName(to)) == 0) {
            flushDirectoryOf(to);
            return to;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return {};
}
