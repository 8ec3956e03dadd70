#pragma once

#include "Services/Children/Utf8Buffer.h"

#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <memory>

/// One output stream of a child: a pipe of our own whose bytes go straight into the place where they stay. QProcess
/// would carry a large output through two more buffers.
class PipeReader : public QObject
{
    Q_OBJECT

public:
    PipeReader() = default;
    ~PipeReader() override;

    /// Makes the pipe. False with `error` set where the system has no more.
    bool open();

    QString error() const { return m_error; }

    /// What the child writes to. Valid between `open` and `start`.
    int writeEnd() const { return m_writeEnd; }

    /// The child has its copy of the write end: closes ours and reads from the event loop from now on.
    void start();

    /// Takes all that the pipe holds at the moment.
    void drain();

    /// What has been read.
    Utf8Buffer &text() { return m_text; }

private:
    void onReadable();
    qsizetype available() const;
    void closeWriteEnd();

    int m_readEnd = -1;
    int m_writeEnd = -1;
    QString m_error;
    std::unique_ptr<QSocketNotifier> m_notifier;
    Utf8Buffer m_text;
};
