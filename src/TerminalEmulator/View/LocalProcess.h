#pragma once

#include "TerminalEmulator/PseudoTerminal.h"

#include <QByteArray>
#include <QObject>
#include <QSize>
#include <QSocketNotifier>
#include <QStringList>
#include <QTimer>
#include <optional>

namespace vt
{

/// Whom a LocalProcess tells, on the thread that made it.
class LocalProcessDelegate
{
public:
    virtual ~LocalProcessDelegate() = default;

    /// While false output stays where it is; a child that goes on writing waits in the end.
    virtual bool wantsOutput() const = 0;
    virtual void dataReceived(QByteArrayView data) = 0;
    /// Once, after the last output; the status as waitpid(2) tells it.
    virtual void processTerminated(int status) = 0;
};

/// A child of this program on a pseudo terminal of its own: leader of a session with the pair as its controlling
/// terminal. Needs an event loop. The child gets SIGHUP when the object goes.
class LocalProcess : public QObject
{
    Q_OBJECT

public:
    /// The delegate outlives it.
    explicit LocalProcess(LocalProcessDelegate &delegate, QObject *parent = nullptr);

    /// Starts `executable`, a path or a name to be found in PATH, on a terminal of the given columns and rows. The
    /// environment is a list of "NAME=value"; empty: this program's own with TERM "xterm-256color", and without
    /// COLUMNS and LINES. Returns 0 or the errno of what failed. To be called once.
    int startProcess(const QString &executable, const QStringList &args, const QStringList &environment,
                     const QSize &desiredWindowSize);

    /// Keys for the child. What it does not take yet is kept; false if too much waits already, or without a child.
    bool send(const QByteArray &data);

    /// Columns and rows, and the size in pixels.
    void setWindowSize(int columns, int rows, const QSize &pixels);

private:
    void read();
    void write();
    void reap();

    LocalProcessDelegate &m_delegate;
    PseudoTerminal m_pty;
    std::optional<QSocketNotifier> m_reading;
    std::optional<QSocketNotifier> m_writing;
    QTimer m_patience; // the end of the stream and that of the child come in any order
    QByteArray m_buffer;
    bool m_isAtEnd = false;
    std::optional<int> m_status;
};

} // namespace vt
