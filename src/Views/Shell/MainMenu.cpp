#include "Views/Shell/MainMenu.h"

#include "Models/ServerStore.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/Sections.h"

#include <QActionGroup>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

using namespace Qt::StringLiterals;

MainMenu::MainMenu(QMainWindow &window, ServerStore &store, ContentViewModel &model)
    : QObject(&window)
    , m_window(window)
    , m_model(model)
    , m_commands(static_cast<qsizetype>(Command::CheckForUpdates) + 1)
{
    // Said before there is a bar; Qt would ask the session bus whether the desktop shows menus itself.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeMenuBar);
    addFileMenu(store);
    addEditMenu();
    addViewMenu();
    addNavigationMenu();
    addHelpMenu();
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { followFocus(now); });
}

QAction &MainMenu::action(Command command) const
{
    return *m_commands.at(static_cast<qsizetype>(command));
}

QAction *MainMenu::addCommand(QMenu &menu, const QString &text, const QKeySequence &keys)
{
    QAction *const action = menu.addAction(text);
    action->setShortcut(keys);
    return action;
}

void MainMenu::addFileMenu(ServerStore &store)
{
    QMenu &menu = *m_window.menuBar()->addMenu(tr("&File"));
    const auto add = [&](Command command, const QString &text, const QKeySequence &keys = {}) {
        QAction *const action = addCommand(menu, text, keys);
        action->setEnabled(false);
        m_commands[static_cast<qsizetype>(command)] = action;
    };
    connect(addCommand(menu, tr("Add Server..."), Qt::CTRL | Qt::Key_N), &QAction::triggered, &m_model,
            [this] { m_model.setShowingAddServer(true); });
    menu.addSeparator();
    add(Command::ImportFromSSHConfig, tr("Import from SSH Config..."), Qt::CTRL | Qt::SHIFT | Qt::Key_I);
    add(Command::ImportFromJSON, tr("Import from JSON..."));
    menu.addSeparator();
    add(Command::ExportAsJSON, tr("Export as JSON..."), Qt::CTRL | Qt::SHIFT | Qt::Key_E);
    add(Command::ExportAsSSHConfig, tr("Export as SSH Config..."));
    menu.addSeparator();

    QAction *const disconnectServer = addCommand(menu, tr("Disconnect from Server..."));
    const auto follow = [&store, disconnectServer] {
        disconnectServer->setEnabled(store.selectedServer().has_value());
    };
    connect(disconnectServer, &QAction::triggered, &m_model, [this] { m_model.setShowingDisconnectAlert(true); });
    connect(&store, &ServerStore::selectedServerChanged, disconnectServer, follow);
    follow();
    menu.addSeparator();
    connect(addCommand(menu, tr("Quit"), Qt::CTRL | Qt::Key_Q), &QAction::triggered, qApp, &QCoreApplication::quit);
}

// The field that has the keyboard handles these keys by itself, so here they are only shown.
void MainMenu::addEditCommand(QMenu &menu, const QString &text, const QKeySequence &keys, const char *slot)
{
    QAction *const action = menu.addAction(text + u'\t' + keys.toString(QKeySequence::NativeText));
    const QByteArray signature = QByteArray(slot) + "()";
    connect(action, &QAction::triggered, this, [this, slot] {
        if (m_editTarget) {
            QMetaObject::invokeMethod(m_editTarget, slot);
        }
    });
    connect(&menu, &QMenu::aboutToShow, action, [this, action, signature] {
        action->setEnabled(m_editTarget && m_editTarget->metaObject()->indexOfSlot(signature.constData()) >= 0);
    });
}

void MainMenu::addEditMenu()
{
    QMenu &menu = *m_window.menuBar()->addMenu(tr("&Edit"));
    addEditCommand(menu, tr("Undo"), Qt::CTRL | Qt::Key_Z, "undo");
    addEditCommand(menu, tr("Redo"), Qt::CTRL | Qt::SHIFT | Qt::Key_Z, "redo");
    menu.addSeparator();
    addEditCommand(menu, tr("Cut"), Qt::CTRL | Qt::Key_X, "cut");
    addEditCommand(menu, tr("Copy"), Qt::CTRL | Qt::Key_C, "copy");
    addEditCommand(menu, tr("Paste"), Qt::CTRL | Qt::Key_V, "paste");
    addEditCommand(menu, tr("Select All"), Qt::CTRL | Qt::Key_A, "selectAll");
}

void MainMenu::followFocus(QWidget *now)
{
    if (now && now->window() == &m_window && now != m_window.menuBar()) {
        m_editTarget = now;
    }
}

void MainMenu::addViewMenu()
{
    QMenu &menu = *m_window.menuBar()->addMenu(tr("&View"));
    auto *const group = new QActionGroup(this);
    for (const MainTab tab : allCases<MainTab>()) {
        const auto digit = shortcutDigit(tab);
        const auto key = static_cast<Qt::Key>(static_cast<int>(Qt::Key_0) + digit.value_or(0));
        QAction *const action =
            addCommand(menu, Sections::title(tab), digit ? QKeySequence(Qt::CTRL | key) : QKeySequence());
        action->setCheckable(true);
        action->setChecked(tab == m_model.selectedTab());
        group->addAction(action);
        connect(action, &QAction::triggered, &m_model, [this, tab] { m_model.chooseTab(tab); });
        connect(&m_model, &ContentViewModel::placeChanged, action,
                [this, action, tab] { action->setChecked(tab == m_model.selectedTab()); });
    }
}

void MainMenu::addNavigationMenu()
{
    QMenu &menu = *m_window.menuBar()->addMenu(tr("&Navigation"));
    connect(addCommand(menu, tr("Focus Search"), Qt::CTRL | Qt::Key_F), &QAction::triggered, &m_model,
            &ContentViewModel::focusGlobalSearch);
    connect(addCommand(menu, tr("Toggle Sidebar"), Qt::CTRL | Qt::ALT | Qt::Key_S), &QAction::triggered, &m_model,
            &ContentViewModel::toggleSidebarVisibility);
    menu.addSeparator();
    QAction *const back = addCommand(menu, tr("Go Back"), Qt::ALT | Qt::Key_Left);
    QAction *const forward = addCommand(menu, tr("Go Forward"), Qt::ALT | Qt::Key_Right);
    connect(back, &QAction::triggered, &m_model, &ContentViewModel::goBack);
    connect(forward, &QAction::triggered, &m_model, &ContentViewModel::goForward);
    const auto follow = [this, back, forward] {
        back->setEnabled(m_model.navigationHistory().canGoBack());
        forward->setEnabled(m_model.navigationHistory().canGoForward());
    };
    connect(&m_model.navigationHistory(), &NavigationHistory::changed, back, follow);
    follow();
}

void MainMenu::addHelpMenu()
{
    QMenu &menu = *m_window.menuBar()->addMenu(tr("&Help"));
    connect(addCommand(menu, tr("About Tarnwell")), &QAction::triggered, this, &MainMenu::aboutRequested);
    QAction *const updates = addCommand(menu, tr("Check for Updates..."));
    updates->setEnabled(false);
    m_commands[static_cast<qsizetype>(Command::CheckForUpdates)] = updates;
}
