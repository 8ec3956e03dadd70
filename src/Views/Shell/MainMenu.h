#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

class ContentViewModel;
class QAction;
class QMainWindow;
class QMenu;
class QWidget;
class ServerStore;

/// The window's menus. All shortcuts are those of its window, so a widget that wants such a key for itself accepts it
/// as a ShortcutOverride.
class MainMenu : public QObject
{
    Q_OBJECT

public:
    /// What is done outside of the window. Each is disabled until there is something behind it.
    enum class Command { ImportFromSSHConfig, ImportFromJSON, ExportAsJSON, ExportAsSSHConfig, CheckForUpdates };

    /// Fills the menu bar of `window`, which the menus belong to. The others outlive them.
    MainMenu(QMainWindow &window, ServerStore &store, ContentViewModel &model);

    QAction &action(Command command) const;

Q_SIGNALS:
    void aboutRequested();

private:
    void addFileMenu(ServerStore &store);
    void addEditMenu();
    void addViewMenu();
    void addNavigationMenu();
    void addHelpMenu();
    QAction *addCommand(QMenu &menu, const QString &text, const QKeySequence &keys = {});
    void addEditCommand(QMenu &menu, const QString &text, const QKeySequence &keys, const char *slot);
    void followFocus(QWidget *now);

    QMainWindow &m_window;
    ContentViewModel &m_model;
    QList<QAction *> m_commands;
    QPointer<QWidget> m_editTarget; // has the keyboard, or had it when a menu took it
};
