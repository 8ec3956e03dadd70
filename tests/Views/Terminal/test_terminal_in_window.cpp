#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include "Models/ServerStore.h"
#include "TerminalEmulator/Engine/Terminal.h"
#include "Views/Shell/ContentView.h"
#include "Views/Shell/ContentViewModel.h"
#include "Views/Shell/NavigationSidebarView.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Theme/Theme.h"

#include <QApplication>
#include <QListView>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

/// The terminal section in the real window: when its session begins, what the list of sections tells of it, and that
/// a disconnect ends it.
class TestTerminalInWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sessionInTheWindow();

private:
    RigSshd m_sshd;
    Theme m_theme;
};

void TestTerminalInWindow::sessionInTheWindow()
{
    m_theme.install();
    QVERIFY2(m_sshd.up(), qPrintable(m_sshd.error()));
    TestTransport t;
    GlobalTerminalSessionManager terminals(
        {{t.launcher, t.keychain, t.settings, t.prompt}, t.manager, t.settings, m_theme});
    ServerStore store(t.defaults, t.clock);
    const Server server = TestTransport::server(m_sshd, AuthMethod::PublicKey);
    store.addServer(server);
    ContentView window(m_theme, ContentView::Services{store, t.manager, t.clock, &terminals});
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    store.setSelectedServer(server);
    QTRY_VERIFY(store.selectedServer()->isConnected);
    QCOMPARE(terminals.terminalsOf(server.id), QList<QUuid>());

    ContentViewModel &model = window.model();
    model.chooseTab(MainTab::Terminal);
    QTRY_COMPARE(terminals.terminalsOf(server.id).size(), 1);
    HostedTerminalView &terminal = *terminals.terminal(server.id).terminal;
    const auto shows = [&terminal](const QByteArray &text) {
        return QTest::qWaitFor(
            [&] {
                const vt::Terminal &engine = terminal.terminal();
                const vt::Position last{engine.screenTop() + engine.rows() - 1, engine.columns() - 1};
                return engine.text({engine.screenTop(), 0}, last).find(text.toStdString()) != std::string::npos;
            },
            15'000);
    };
    QTRY_VERIFY(terminals.sessionState(server.id).isCurrentlyConnected);
    terminal.coordinator().terminalSends("echo re''ady\r");
    QVERIFY(shows("ready"));
    QTRY_COMPARE(QApplication::focusWidget(), &terminal);
    QCOMPARE(model.mark(MainTab::Terminal), SectionMark::None);

    const QModelIndex row = window.navigationSidebar().list().model()->index(static_cast<int>(MainTab::Terminal), 0);
    terminal.coordinator().terminalSends("sleep 0.2; echo new''s; sleep 0.2; printf '\\a'\r");
    QTest::qWait(50);
    model.chooseTab(MainTab::Dashboard);
    QTRY_COMPARE(model.mark(MainTab::Terminal), SectionMark::News);
    QTRY_COMPARE(model.mark(MainTab::Terminal), SectionMark::Attention);
    QVERIFY(row.data(Qt::AccessibleDescriptionRole).toString().contains(u"attention"_s));
    model.chooseTab(MainTab::Terminal);
    QVERIFY(shows("news"));
    QTRY_COMPARE(model.mark(MainTab::Terminal), SectionMark::None);

    const pid_t client = terminal.coordinator().hostedSSHManager()->processId();
    model.disconnectServer();
    QCOMPARE(terminals.terminalsOf(server.id), QList<QUuid>());
    QTRY_VERIFY(::kill(client, 0) != 0);
    QVERIFY(!store.server(server.id)->isConnected);
}

QTEST_MAIN(TestTerminalInWindow)
#include "test_terminal_in_window.moc"
