#include "Views/AccessibilityWalk.h"
#include "Views/Components/AlertDialog.h"
#include "Views/FakeTransport.h"
#include "Views/Shell/AboutView.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/MainMenu.h"
#include "Views/Theme/Theme.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestMainMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void init();
    void cleanup();

    void texts();
    void outsideCommandsWaitForTheirFeature();
    void keys();
    void aFieldKeepsItsKeys();
    void editsWhatHasTheKeyboard();
    void disconnects();
    void about();

private:
    QMenu *menu(int index) const { return m_window->menuBar()->actions().at(index)->menu(); }

    QAction *action(const QString &text) const
    {
        for (const QAction *bar : m_window->menuBar()->actions()) {
            for (QAction *action : bar->menu()->actions()) {
                if (action->text().section(u'\t', 0, 0) == text) {
                    return action;
                }
            }
        }
        qFatal("no such entry");
    }

    Theme m_theme;
    std::unique_ptr<FakeTransport> m_transport;
    std::unique_ptr<ContentView> m_window;
};

void TestMainMenu::init()
{
    m_transport = std::make_unique<FakeTransport>();
    m_window = std::make_unique<ContentView>(
        m_theme, ContentView::Services{m_transport->store, m_transport->manager, m_transport->clock});
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestMainMenu::cleanup()
{
    m_window.reset();
    m_transport.reset();
}

void TestMainMenu::texts()
{
    QStringList menus;
    for (const QAction *bar : m_window->menuBar()->actions()) {
        QStringList entries;
        for (const QAction *entry : bar->menu()->actions()) {
            const QString keys = entry->shortcut().toString(QKeySequence::PortableText);
            entries.append(entry->isSeparator() ? u"-"_s
                           : keys.isEmpty()     ? entry->text().replace(u'\t', u'=')
                                                : entry->text() + u'=' + keys);
        }
        menus.append(bar->text().remove(u'&') + u": "_s + entries.join(u", "_s));
    }
    QCOMPARE(menus.at(0),
             u"File: Add Server...=Ctrl+N, -, Import from SSH Config...=Ctrl+Shift+I, Import from JSON..., -, "
             "Export as JSON...=Ctrl+Shift+E, Export as SSH Config..., -, Disconnect from Server..., -, "
             "Quit=Ctrl+Q"_s);
    QCOMPARE(menus.at(1), u"Edit: Undo=Ctrl+Z, Redo=Ctrl+Shift+Z, -, Cut=Ctrl+X, Copy=Ctrl+C, Paste=Ctrl+V, "
                          "Select All=Ctrl+A"_s);
    QCOMPARE(menus.at(2),
             u"View: Dashboard=Ctrl+1, Terminal=Ctrl+2, Processes=Ctrl+3, Services=Ctrl+4, "
             "Containers=Ctrl+5, Ports=Ctrl+6, Users=Ctrl+7, Packages=Ctrl+8, Files=Ctrl+9, Cron, Logs"_s);
    QCOMPARE(menus.at(3), u"Navigation: Focus Search=Ctrl+F, Toggle Sidebar=Ctrl+Alt+S, -, Go Back=Alt+Left, "
                          "Go Forward=Alt+Right"_s);
    QCOMPARE(menus.at(4), u"Help: About Tarnwell, Check for Updates..."_s);
}

void TestMainMenu::outsideCommandsWaitForTheirFeature()
{
    using Command = MainMenu::Command;
    for (const auto &[command, text] : {std::pair{Command::ImportFromSSHConfig, u"Import from SSH Config..."_s},
                                        {Command::ImportFromJSON, u"Import from JSON..."_s},
                                        {Command::ExportAsJSON, u"Export as JSON..."_s},
                                        {Command::ExportAsSSHConfig, u"Export as SSH Config..."_s},
                                        {Command::CheckForUpdates, u"Check for Updates..."_s}}) {
        QCOMPARE(m_window->menu().action(command).text(), text);
        QVERIFY(!m_window->menu().action(command).isEnabled());
    }
}

void TestMainMenu::keys()
{
    const Server server = m_transport->add(u"web"_s);
    m_transport->store.setSelectedServer(server);
    const ContentViewModel &model = m_window->model();
    QTest::keyClick(m_window.get(), Qt::Key_9, Qt::ControlModifier);
    QCOMPARE(model.selectedTab(), MainTab::Files);
    QVERIFY(action(u"Files"_s)->isChecked() && !action(u"Dashboard"_s)->isChecked());
    QTest::keyClick(m_window.get(), Qt::Key_2, Qt::ControlModifier);
    QCOMPARE(model.selectedTab(), MainTab::Terminal);
    QTest::keyClick(m_window.get(), Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(model.selectedTab(), MainTab::Files);
    QCoreApplication::processEvents();
    QTest::keyClick(m_window.get(), Qt::Key_Right, Qt::AltModifier);
    QCOMPARE(model.selectedTab(), MainTab::Terminal);
    QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier | Qt::AltModifier);
    QVERIFY(!model.isSidebarVisible());
    QTest::keyClick(m_window.get(), Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(model.searchFocusTrigger(), 1);
    QVERIFY(model.isSidebarVisible());
}

void TestMainMenu::aFieldKeepsItsKeys()
{
    // A terminal does so for all that belongs to the shell.
    struct Shell : QWidget {
        using QWidget::QWidget;
        QList<int> keys;

        bool event(QEvent *event) override
        {
            if (event->type() == QEvent::ShortcutOverride) {
                event->accept();
            }
            return QWidget::event(event);
        }

        void keyPressEvent(QKeyEvent *event) override
        {
            if (event->key() != Qt::Key_Control) {
                keys.append(event->key());
            }
        }
    };

    Shell shell(m_window->centralWidget());
    shell.setFocusPolicy(Qt::StrongFocus);
    shell.show();
    shell.setFocus();
    QTest::keyClick(&shell, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClick(&shell, Qt::Key_2, Qt::ControlModifier);
    QCOMPARE(shell.keys, (QList<int>{Qt::Key_F, Qt::Key_2}));
    QCOMPARE(m_window->model().searchFocusTrigger(), 0);
}

void TestMainMenu::editsWhatHasTheKeyboard()
{
    QLineEdit field(u"web-01"_s, m_window->centralWidget());
    field.show();
    field.setFocus();
    QTRY_COMPARE(QApplication::focusWidget(), &field);
    Q_EMIT menu(1)->aboutToShow();
    QVERIFY(action(u"Copy"_s)->isEnabled());
    action(u"Select All"_s)->trigger();
    action(u"Cut"_s)->trigger();
    QCOMPARE(field.text(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), u"web-01"_s);
    action(u"Paste"_s)->trigger();
    action(u"Paste"_s)->trigger();
    QCOMPARE(field.text(), u"web-01web-01"_s);
    action(u"Undo"_s)->trigger();
    QCOMPARE(field.text(), u"web-01"_s);

    QPushButton button(m_window->centralWidget());
    button.show();
    button.setFocus();
    Q_EMIT menu(1)->aboutToShow();
    QVERIFY(!action(u"Copy"_s)->isEnabled());
    action(u"Copy"_s)->trigger();
}

void TestMainMenu::disconnects()
{
    QAction &entry = *action(u"Disconnect from Server..."_s);
    QVERIFY(!entry.isEnabled());
    m_transport->store.setSelectedServer(m_transport->add(u"web"_s));
    QVERIFY(entry.isEnabled());
    entry.trigger();
    QVERIFY(m_window->disconnectAlert());
    m_window->disconnectAlert()->buttons().at(1)->click();
    QVERIFY(!m_transport->store.selectedServer());
    QVERIFY(!entry.isEnabled());
}

void TestMainMenu::about()
{
    const QSignalSpy spy(&m_window->menu(), &MainMenu::aboutRequested);
    action(u"About Tarnwell"_s)->trigger();
    QCOMPARE(spy.size(), 1);

    QCoreApplication::setApplicationName(u"Tarnwell"_s);
    QCoreApplication::setApplicationVersion(u"1.2.3"_s);
    QPointer<AboutView> view = new AboutView(m_theme, {{u"Website"_s, QUrl(u"https://example.invalid"_s)}}, nullptr);
    view->show();
    QCOMPARE(view->windowTitle(), u"About Tarnwell"_s);
    QStringList texts;
    for (const QLabel *label : view->findChildren<QLabel *>()) {
        texts.append(label->text());
    }
    for (const QString &text : {u"Tarnwell"_s, u"Version 1.2.3"_s, u"Support & Resources"_s,
                                u"A comprehensive GUI tool for managing Linux servers via SSH"_s}) {
        QVERIFY2(texts.contains(text), qPrintable(text));
    }
    QCOMPARE(AccessibilityWalk::faults(*view), QString());
    QTest::keyClick(view.data(), Qt::Key_Escape);
    QTRY_VERIFY(!view);
}

QTEST_MAIN(TestMainMenu)
#include "test_main_menu.moc"
