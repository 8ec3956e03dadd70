#include "TerminalEmulator/View/LocalProcess.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace vt
{

namespace
{

constexpr qsizetype BlockSize = 1 << 16;
constexpr int PatienceMs = 100;

std::vector<std::string> defaultEnvironment()
{
    constexpr std::array<std::string_view, 3> Own{"TERM=", "COLUMNS=", "LINES="};
    std::vector<std::string> result{"TERM=xterm-256color"};
    for (char **entry = environ; entry && *entry; ++entry) {
        const std::string_view text(*entry);
        if (std::ranges::none_of(Own, [&](std::string_view name) { return text.starts_with(name); })) {
            result.emplace_back(text);
        }
    }
    return result;
}

std::vector<std::string> bytesOf(const QStringList &texts)
{
    std::vector<std::string> result;
    for (const QString &text : texts) {
        result.push_back(text.toStdString());
    }
    return result;
}

} // namespace

LocalProcess::LocalProcess(LocalProcessDelegate &delegate, QObject *parent)
    : QObject(parent)
    , m_delegate(delegate)
    , m_buffer(BlockSize, Qt::Uninitialized)
{
    connect(&m_patience, &QTimer::timeout, this, &LocalProcess::reap);
}

int LocalProcess::startProcess(const QString &executable, const QStringList &args, const QStringList &environment,
                               const QSize &desiredWindowSize)
{
    const PseudoTerminal::Command command{.program = executable.toStdString(),
                                          .arguments = bytesOf(args),
                                          .environment =
                                              environment.isEmpty() ? defaultEnvironment() : bytesOf(environment),
                                          .workingDirectory = {}};
    int error = m_pty.open(desiredWindowSize.width(), desiredWindowSize.height());
    error = error != 0 ? error : m_pty.spawn(command);
    if (error != 0) {
        m_pty.close();
        return error;
    }
    m_pty.readAhead();
    m_reading.emplace(m_pty.readable(), QSocketNotifier::Read);
    m_writing.emplace(m_pty.master(), QSocketNotifier::Write);
    m_writing->setEnabled(false);
    connect(&*m_reading, &QSocketNotifier::activated, this, &LocalProcess::read);
    connect(&*m_writing, &QSocketNotifier::activated, this, &LocalProcess::write);
    m_patience.start(PatienceMs);
    return 0;
}

bool LocalProcess::send(const QByteArray &data)
{
    if (!m_writing) {
        return false;
    }
    const bool isTaken = m_pty.write({data.data(), static_cast<size_t>(data.size())});
    m_writing->setEnabled(m_pty.hasPending());
    return isTaken;
}

void LocalProcess::setWindowSize(int columns, int rows, const QSize &pixels)
{
    m_pty.setSize(columns, rows, pixels.width(), pixels.height());
}

/// Reads while the delegate keeps up; the notifier calls again as long as something is there.
void LocalProcess::read()
{
    while (m_delegate.wantsOutput()) {
        const ssize_t count = m_pty.read(m_buffer.data(), static_cast<size_t>(m_buffer.size()));
        if (count < 0) {
            return;
        }
        if (count == 0) {
            m_reading->setEnabled(false);
            m_isAtEnd = true;
            reap();
            return;
        }
        m_delegate.dataReceived(QByteArrayView(m_buffer.constData(), count));
    }
}

void LocalProcess::write()
{
    m_writing->setEnabled(!m_pty.flush());
}

void LocalProcess::reap()
{
    int status = 0;
    if (!m_status && m_pty.hasExited(status)) {
        m_status = status;
    }
    if (m_status && m_isAtEnd) {
        m_patience.stop();
        m_delegate.processTerminated(*m_status);
    }
}

} // namespace vt
