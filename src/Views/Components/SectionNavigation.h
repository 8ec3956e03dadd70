#pragma once

#include "Models/MainTab.h"

#include <QObject>

/// The way from one section of a server to another: who asks knows no other section, and who answers not who asked.
/// One belongs to the sections of one server.
class SectionNavigation : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Shows the processes, with this one selected.
    void showProcess(qint64 pid)
    {
        Q_EMIT tabRequested(MainTab::Processes);
        Q_EMIT processRequested(pid);
    }

    /// Shows the ports, those of this process only.
    void showPorts(qint64 pid)
    {
        Q_EMIT tabRequested(MainTab::Ports);
        Q_EMIT portsRequested(pid);
    }

Q_SIGNALS:
    /// For the window.
    void tabRequested(MainTab tab);

    /// For the sections.
    void processRequested(qint64 pid);
    void portsRequested(qint64 pid);
};
