#pragma once

#include <QObject>

/// SIGTERM, SIGINT and SIGHUP as a signal of the event loop, so that the program ends as if it were closed. One
/// object for the process.
class UnixSignals : public QObject
{
    Q_OBJECT

public:
    explicit UnixSignals(QObject *parent = nullptr);
    ~UnixSignals() override;

Q_SIGNALS:
    void endRequested();

private:
    int m_read = -1;
};
