#pragma once

#include <QMainWindow>
#include <QPointer>

class Clock;
class CommandSSHManager;
class DashboardView;
class DashboardViewModel;
class NoticeBar;
class ServerListView;
class ServerStore;
class StatePage;
class QSplitter;
class Theme;

/// The main window: the servers at the left, and beside them what belongs to the selected one.
class ContentView : public QMainWindow
{
    Q_OBJECT

public:
    /// What the window works on; all of it outlives the window.
    struct Services {
        ServerStore &store;
        CommandSSHManager &manager;
        const Clock &clock;
    };

    ContentView(const Theme &theme, const Services &services, QWidget *parent = nullptr);
    ~ContentView() override;

    /// A sentence that the operator should see.
    void addNotice(const QString &notice);

    NoticeBar &notices() const { return *m_notices; }

    ServerListView &serverList() const { return *m_serverList; }

    /// Of the selected server; null when none is selected.
    DashboardView *dashboard() const;

    DashboardViewModel *dashboardModel() const;

private:
    void followSelection();
    void showWithoutServer();

    const Theme &m_theme;
    Services m_services;
    NoticeBar *m_notices;
    ServerListView *m_serverList;
    QSplitter *m_splitter;
    StatePage *m_page;
    QWidget *m_sections;
    QPointer<DashboardViewModel> m_dashboardModel;
    QPointer<DashboardView> m_dashboard;
};
