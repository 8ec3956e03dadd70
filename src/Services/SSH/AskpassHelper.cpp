#include "Services/SSH/AskpassHelper.h"

#include "Helpers/Log.h"
#include "Helpers/Secret.h"

#include <QFile>
#include <QTimer>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

// bash's echo takes such a first argument for its options and doesn't print it.
bool isEchoOption(const QByteArray &text)
{
    return text.size() > 1 && text.startsWith('-') &&
           std::all_of(text.begin() + 1, text.end(), [](char c) { return c == 'n' || c == 'e' || c == 'E'; });
}

// Writes a new file. False, with the cause in errno, on any failure; then a part of it may stand.
bool writeScript(const QByteArray &name, const QByteArray &content)
{
    const int fd = open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRWXU);
    if (fd < 0) {
        return false;
    }
    // A strict umask may have taken the right to execute it.
    bool good = fchmod(fd, S_IRWXU) == 0;
    qsizetype done = 0;
    while (good && done < content.size()) {
        const ssize_t n = write(fd, content.constData() + done, static_cast<size_t>(content.size() - done));
        good = n > 0 || (n < 0 && errno == EINTR);
        done += std::max<ssize_t>(n, 0);
    }
    const int cause = errno;
    const bool closed = close(fd) == 0;
    if (!good) {
        errno = cause;
    }
    return good && closed;
}

} // namespace

AskpassHelper::AskpassHelper(RuntimeDirectory &directory, std::chrono::milliseconds lifetime)
    : m_directory(directory)
    , m_lifetime(lifetime)
{
}

AskpassHelper::~AskpassHelper()
{
    removeAll();
}

QStringList AskpassHelper::variablesToRemove()
{
    return {u"BASH_ENV"_s, u"BASHOPTS"_s, u"SHELLOPTS"_s};
}

std::optional<QByteArray> AskpassHelper::content(const QString &secret)
{
    std::optional<QByteArray> text = strictUtf8(secret);
    if (!text) {
        return std::nullopt;
    }
    // The secret stands between double quotes, where exactly these four keep a meaning (bash(1), QUOTING). The
    // backslash goes first, so that those of the other three aren't doubled.
    const bool isOption = isEchoOption(*text);
    text->replace("\\", "\\\\").replace("\"", "\\\"").replace("$", "\\$").replace("`", "\\`");
    QByteArray script = "#!/bin/bash\n";
    script += isOption ? "printf '%s\\n' \"" : "echo \"";
    script += *text + '"';
    wipe(*text);
    return script;
}

std::optional<QString> AskpassHelper::createAskpassScript(const QString &secret)
{
    const auto fail = [](const QString &why) {
        Log::error(u"Failed to create askpass script: "_s + why, Log::Category::Auth);
        return std::nullopt;
    };
    if (!m_directory.ensure()) {
        return fail(m_directory.refusal());
    }
    std::optional<QByteArray> script = content(secret);
    if (!script) {
        return fail(u"the secret is not encodable as UTF-8"_s);
    }
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    QString path = m_directory.path() + u"/tarnwell_askpass_"_s + id + u".sh"_s;
    const bool written = writeScript(QFile::encodeName(path), *script);
    const int cause = errno;
    wipe(*script);
    if (!written) {
        QFile::remove(path);
        return fail(qt_error_string(cause));
    }
    m_scripts.insert(path);
    QTimer::singleShot(m_lifetime, Qt::PreciseTimer, &m_timers, [this, path] { remove(path); });
    return path;
}

void AskpassHelper::remove(const QString &path)
{
    if (m_scripts.remove(path)) {
        QFile::remove(path);
    }
}

void AskpassHelper::removeAll()
{
    for (const QString &path : std::exchange(m_scripts, {})) {
        QFile::remove(path);
    }
}
