#include "Services/Children/ChildProcess.h"

#include <chrono>
#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kKillDelay = std::chrono::milliseconds(2000);

std::chrono::milliseconds toMilliseconds(double seconds)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

QByteArray textOf(Utf8Buffer &buffer)
{
    const bool isValid = buffer.isValid();
    const QByteArray bytes = buffer.take();
    return isValid ? bytes : QByteArray();
}

// Runs in the forked child before the program. Only functions of signal-safety(7) may be called here.
void prepareChild(int output, int error)
{
    ::dup2(output, STDOUT_FILENO);
    ::dup2(error, STDERR_FILENO);
    ::setsid();
    // A signal between here and the program must not run our own handlers, and none may stay blocked in the program.
    for (const int handled : {SIGTERM, SIGINT, SIGHUP}) {
        ::signal(handled, SIG_DFL);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

} // namespace

ChildProcess::ChildProcess(ChildSetup setup, Done done)
    : m_setup(std::move(setup))
    , m_done(std::move(done))
{
    m_timeLimit.setSingleShot(true);
    m_timeLimit.setTimerType(Qt::PreciseTimer);
    m_killDelay.setSingleShot(true);
    m_killDelay.setTimerType(Qt::PreciseTimer);

    connect(&m_timeLimit, &QTimer::timeout, this, &ChildProcess::onTimeLimit);
    connect(&m_killDelay, &QTimer::timeout, this, [this] { ::kill(-static_cast<pid_t>(processId()), SIGKILL); });
    connect(&m_process, &QProcess::started, this, [this] {
        if (m_setup.onStarted) {
            m_setup.onStarted(m_process.processId());
        }
    });
    connect(&m_process, &QProcess::finished, this, [this](int exitCode) { onFinished(exitCode); });
    // Queued: QProcess reports a failed fork from inside its start(), where a completion would surprise the caller.
    connect(
        &m_process, &QProcess::errorOccurred, this,
        [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) {
                complete(ChildOutcome::Kind::FailedToStart, -1, m_process.errorString());
            }
        },
        Qt::QueuedConnection);
}

ChildProcess::~ChildProcess()
{
    abandon();
}

void ChildProcess::start()
{
    if (!m_output.open() || !m_error.open()) {
        const QString reason = m_output.error() + m_error.error();
        QTimer::singleShot(0, this, [this, reason] { complete(ChildOutcome::Kind::FailedToStart, -1, reason); });
        return;
    }
    m_process.setProgram(m_setup.program);
    m_process.setArguments(m_setup.arguments);
    if (m_setup.environment) {
        m_process.setProcessEnvironment(*m_setup.environment);
    }
    if (m_setup.input.isEmpty()) {
        m_process.setStandardInputFile(QProcess::nullDevice());
    }
    m_process.setStandardOutputFile(QProcess::nullDevice()); // ours take their place
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.setChildProcessModifier(
        [output = m_output.writeEnd(), error = m_error.writeEnd()] { prepareChild(output, error); });
    if (m_setup.timeLimit) {
        m_timeLimit.start(toMilliseconds(*m_setup.timeLimit));
    }
    m_process.start(m_setup.input.isEmpty() ? QIODevice::ReadOnly : QIODevice::ReadWrite);
    m_output.start();
    m_error.start();
    if (!m_setup.input.isEmpty()) {
        m_process.write(m_setup.input);
        m_process.closeWriteChannel();
        m_setup.input.clear();
    }
}

void ChildProcess::terminate()
{
    sendSignal(SIGTERM);
}

void ChildProcess::sendSignal(int signal)
{
    if (isRunning()) {
        ::kill(static_cast<pid_t>(processId()), signal);
    }
}

void ChildProcess::abandon()
{
    if (!m_done) {
        return;
    }
    m_process.disconnect(this);
    if (isRunning()) {
        ::kill(-static_cast<pid_t>(processId()), SIGKILL);
        m_process.kill(); // also right in the moment before the child has made its own group
        m_process.waitForFinished();
    }
    complete(ChildOutcome::Kind::Cancelled, -1, tr("The application is ending"));
}

bool ChildProcess::isRunning() const
{
    return m_process.state() != QProcess::NotRunning && m_process.processId() > 0;
}

qint64 ChildProcess::processId() const
{
    return m_process.processId();
}

void ChildProcess::onTimeLimit()
{
    if (!isRunning()) {
        return;
    }
    m_timedOut = true;
    if (m_setup.onTimeLimit) {
        m_setup.onTimeLimit();
    }
    terminate();
    m_killDelay.start(kKillDelay);
}

void ChildProcess::onFinished(int exitCode)
{
    m_output.drain();
    m_error.drain();
    complete(m_timedOut ? ChildOutcome::Kind::TimedOut : ChildOutcome::Kind::Exited, exitCode, {});
}

void ChildProcess::complete(ChildOutcome::Kind kind, int exitCode, const QString &reason)
{
    m_timeLimit.stop();
    m_killDelay.stop();
    if (const Done done = std::exchange(m_done, nullptr)) {
        done(this, {kind, exitCode, textOf(m_output.text()), textOf(m_error.text()), reason});
    }
}
