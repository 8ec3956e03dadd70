#pragma once

#include "Views/Shell/Sections.h"

#include <QMainWindow>
#include <QPointer>

class AlertDialog;
class CompactHeader;
class ContentViewModel;
class Curtain;
class DashboardView;
class DashboardViewModel;
class MainMenu;
class NavigationSidebarView;
class NoticeBar;
class QSplitter;
class SectionPages;
class ServerListView;
class StatePage;

/// The main window, in one of two arrangements. Wide: the servers, the sections and, beside them, the section of the
/// selected server; both lists can be put away. Narrow: a header in place of the lists.
class ContentView : public QMainWindow
{
    Q_OBJECT

public:
    using Services = SectionServices;

    static constexpr QSize kDefaultSize{1200, 800};

    /// The services and the theme outlive the window.
    ContentView(const Theme &theme, const Services &services, QWidget *parent = nullptr);
    ~ContentView() override;

    ContentViewModel &model() const { return *m_model; }

    MainMenu &menu() const { return *m_menu; }

    /// A sentence that the operator should see.
    void addNotice(const QString &notice);

    NoticeBar &notices() const { return *m_notices; }

    ServerListView &serverList() const { return *m_serverList; }

    NavigationSidebarView &navigationSidebar() const { return *m_navigationSidebar; }

    CompactHeader &compactHeader() const { return *m_compactHeader; }

    SectionPages &pages() const { return *m_pages; }

    /// Of the selected server; null when none is selected, or while its page is still to be made.
    DashboardView *dashboard() const;
    DashboardViewModel *dashboardModel() const;

    /// The question whether to disconnect, while it is open.
    AlertDialog *disconnectAlert() const;

    /// The widths of the server list and of the section list, as they are when both are on show.
    QList<int> sidebarWidths() const;
    void setSidebarWidths(const QList<int> &widths);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *makeSidebarRail();
    QWidget *makeBody();
    void connectModel();
    void arrange(bool isAnimated);
    void showPlace();
    void showWithoutServer();
    void pageMade(MainTab tab, SectionPage *page);
    void followDisconnectAlert(bool isShowing);
    void followAddServer(bool isShowing);
    void focusSearch();
    void followTerminalNews();

    const Theme &m_theme;
    Services m_services;
    ContentViewModel *m_model;
    MainMenu *m_menu;
    NoticeBar *m_notices;
    ServerListView *m_serverList;
    NavigationSidebarView *m_navigationSidebar;
    CompactHeader *m_compactHeader;
    SectionPages *m_pages;
    StatePage *m_page;
    QSplitter *m_lists; // the two lists
    QList<int> m_sidebarWidths;
    bool m_isPainted = false;
    Curtain *m_sidebar; // around them
    QSplitter *m_splitter;
    Curtain *m_header;
    QWidget *m_sidebarRail; // in place of the lists
    QPointer<AlertDialog> m_disconnectAlert;
};
