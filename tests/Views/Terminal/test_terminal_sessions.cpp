#include "rig/RigSshd.h"
#include "rig/TestTransport.h"

#include "Models/ServerStore.h"
#include "TerminalEmulator/Engine/Terminal.h"
#include "Views/Components/AlertDialog.h"
#include "Views/Components/Pill.h"
#include "Views/Terminal/ClipboardRequestBar.h"
#include "Views/Terminal/GlobalTerminalSessionManager.h"
#include "Views/Terminal/TerminalFindField.h"
#include "Views/Terminal/TerminalHostView.h"
#include "Views/Terminal/TerminalHostWrapper.h"
#include "Views/Terminal/TerminalReconnectOverlay.h"
#include "Views/Terminal/TerminalTabs.h"
#include "Views/Terminal/TerminalView.h"
#include "Views/Theme/Theme.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPatience = 15'000;

// Milliseconds. The sanitizers slow the emulator and the painting down several times.
#if defined(__has_feature) && __has_feature(address_sanitizer)
constexpr qint64 kInputWait = 250;
constexpr qint64 kInterruptWait = 10'000;
#else
constexpr qint64 kInputWait = 50;
constexpr qint64 kInterruptWait = 500;
#endif

// What the program hands to its store.
class Effects : public ServerStoreDelegate
{
public:
    void sshSettingsChanged(const Server &updated) override { terminals->serverSettingsChanged(updated); }

    void serverDeleted(const Server &removed) override { terminals->cleanupServer(removed.id); }

    GlobalTerminalSessionManager *terminals = nullptr;
};

// In place of the desktop's browser.
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened;

public Q_SLOTS:

    void open(const QUrl &url) { opened.append(url); }
};

bool isRunning(pid_t pid)
{
    return pid > 0 && ::kill(pid, 0) == 0;
}

} // namespace

/// Terminals against a real daemon, as the window uses them: how long they live, what they show, and what a server
/// cannot do through them.
class TestTerminalSessions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void nothingStartsUnseen();
    void leavesAndComesBack();
    void twoServersSideBySide();
    void exitAndReconnect();
    void reconnectAfterAClientThatNeverStarted();
    void keysAreNotTakenForAnAnswer();
    void linksOpenOnlyAfterControlClick();
    void hostChangedWhileLive();
    void deletedServer();
    void quit();
    void keyboardGoesToTheTerminal();
    void calmUnderAFlood();
    void floodOfQueries();
    void settingsLive();
    void newsWhileHidden();
    void moreTerminals();
    void finding();
    void clipboardNeedsConsent();
    void severalLinesAreAskedAbout();

private:
    Server add(const QString &name, const QString &account = {})
    {
        Server server =
            TestTransport::server(m_sshd, AuthMethod::PublicKey, account.isEmpty() ? m_sshd.plainAccount() : account);
        server.name = name;
        m_store->addServer(server);
        return server;
    }

    // The page of a server, in place of any other one, as the window does it.
    TerminalView &show(const Server &server)
    {
        hide();
        m_page = std::make_unique<TerminalView>(m_theme, *m_store, *m_terminals, server);
        m_window->layout()->addWidget(m_page.get());
        m_page->show();
        m_page->setActive(true);
        return *m_page;
    }

    void hide()
    {
        if (m_page) {
            m_page->setActive(false);
            m_page->hide();
            m_page.reset();
        }
    }

    HostedTerminalView &view(const Server &server) const
    {
        return *m_terminals->terminal(m_terminals->currentTerminal(server.id)).terminal;
    }

    pid_t pid(const Server &server) const
    {
        auto *const session = view(server).coordinator().hostedSSHManager();
        return session ? session->processId() : -1;
    }

    // What can be seen at the moment.
    static QString screen(const HostedTerminalView &view)
    {
        const vt::Terminal &terminal = view.terminal();
        const vt::Position last{terminal.screenTop() + terminal.rows() - 1, terminal.columns() - 1};
        return QString::fromStdString(terminal.text({terminal.screenTop(), 0}, last));
    }

    // All of the screen and the scrollback.
    static QString text(HostedTerminalView &view)
    {
        view.flushOutput();
        const vt::Terminal &terminal = view.terminal();
        const std::string bytes = terminal.text({terminal.firstLine(), 0},
                                                {terminal.screenTop() + terminal.rows() - 1, terminal.columns() - 1});
        return QString::fromStdString(bytes);
    }

    static bool shows(HostedTerminalView &view, const QString &wanted, int patience = kPatience)
    {
        // To read all of the scrollback takes more time than a turn of the terminal: seldom, then.
        QElapsedTimer read;
        const auto isThere = [&] {
            if (read.isValid() && read.elapsed() < 250) {
                return screen(view).contains(wanted);
            }
            const bool found = text(view).contains(wanted);
            read.start();
            return found;
        };
        return QTest::qWaitFor(isThere, patience);
    }

    static bool says(HostedTerminalView &view, const QByteArray &line, const QString &wanted)
    {
        view.coordinator().terminalSends(line + '\r');
        return shows(view, wanted);
    }

    // Shows the server's terminal and waits for its shell.
    HostedTerminalView *open(const Server &server)
    {
        show(server);
        HostedTerminalView *const terminal = &view(server);
        return shows(*terminal, u":~$"_s) && says(*terminal, "echo re''ady", u"ready"_s) ? terminal : nullptr;
    }

    RigSshd m_sshd;
    Theme m_theme;
    Effects m_effects;
    std::unique_ptr<TestTransport> m_transport;
    std::unique_ptr<GlobalTerminalSessionManager> m_terminals;
    std::unique_ptr<ServerStore> m_store;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<TerminalView> m_page;
};

void TestTerminalSessions::initTestCase()
{
    m_theme.install();
    QVERIFY2(m_sshd.up(RigSshd::isRoot() ? RigSshd::Accounts::Created : RigSshd::Accounts::Present),
             qPrintable(m_sshd.error()));
}

void TestTerminalSessions::init()
{
    m_transport = std::make_unique<TestTransport>();
    TestTransport &t = *m_transport;
    m_terminals = std::make_unique<GlobalTerminalSessionManager>(HostedTerminalView::Coordinator::Services{
        {t.launcher, t.keychain, t.settings, t.prompt}, t.manager, t.settings, m_theme});
    m_effects.terminals = m_terminals.get();
    m_store = std::make_unique<ServerStore>(t.defaults, t.clock, &m_effects);
    m_window = std::make_unique<QWidget>();
    auto *const layout = new QVBoxLayout(m_window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    m_window->resize(872, 772);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestTerminalSessions::cleanup()
{
    hide();
    m_window.reset();
    m_terminals.reset();
    QCOMPARE(m_transport->tracker.count(), 0);
    QCOMPARE(m_transport->askpassScripts(), QStringList());
    m_store.reset();
    m_transport.reset();
}

void TestTerminalSessions::nothingStartsUnseen()
{
    const Server server = add(u"web"_s);
    TerminalView page(m_theme, *m_store, *m_terminals, server);
    QTest::qWait(50);
    QCOMPARE(m_terminals->terminalsOf(server.id), QList<QUuid>());
    QCOMPARE(page.connectionPill().text(), u"Disconnected"_s);
    QCOMPARE(m_transport->tracker.count(), 0);
    m_terminals->focusTerminal(server.id);
    m_terminals->cleanupServer(server.id);
}

void TestTerminalSessions::leavesAndComesBack()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    QCOMPARE(m_page->connectionPill().text(), u"Connected"_s);
    const pid_t before = pid(server);
    terminal->coordinator().terminalSends("sleep 0.3; seq -s, 1 50; echo mean''while\r");
    hide();
    QTest::qWait(100);
    QVERIFY(!terminal->parentWidget());
    QVERIFY(!text(*terminal).contains(u"meanwhile"_s));
    QVERIFY(shows(*terminal, u"meanwhile"_s));

    show(server);
    QCOMPARE(&view(server), terminal);
    QVERIFY(terminal->isVisible());
    QCOMPARE(pid(server), before);
    QVERIFY(text(*terminal).contains(u"ready"_s));
    QVERIFY(text(*terminal).contains(u",49,50"_s));
    QVERIFY(says(*terminal, "echo $((20+22)).", u"42."_s));
}

void TestTerminalSessions::twoServersSideBySide()
{
    const Server one = add(u"one"_s);
    const Server two = add(u"two"_s);
    HostedTerminalView *const first = open(one);
    QVERIFY(first);
    const pid_t firstPid = pid(one);
    first->coordinator().terminalSends("x=in-one; (sleep 0.2; echo late''r) &\r");
    HostedTerminalView *const second = open(two);
    QVERIFY(second && second != first);
    QVERIFY(says(*second, "echo \"<$x>\"", u"<>"_s));
    QVERIFY(shows(*first, u"later"_s));
    show(one);
    QCOMPARE(pid(one), firstPid);
    QVERIFY(says(*first, "echo \"<$x>\"", u"<in-one>"_s));
    QVERIFY(isRunning(pid(two)));
    QVERIFY(!text(*second).contains(u"later"_s));
}

void TestTerminalSessions::exitAndReconnect()
{
    const Server server = add(u"web <b>01</b>"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    TerminalReconnectOverlay &overlay = m_page->wrapper().overlay();
    QVERIFY(!overlay.isVisible());
    QSignalSpy closed(m_terminals.get(), &GlobalTerminalSessionManager::terminalDisconnected);
    terminal->coordinator().terminalSends("exit\r");
    QTRY_COMPARE(closed.count(), 1);
    QCOMPARE(closed.at(0).at(0).toUuid(), server.id);
    QVERIFY(text(*terminal).contains(u"\u25c9 Connection closed"_s));
    QVERIFY(overlay.isVisible());
    QCOMPARE(overlay.accessibleDescription(), u"The SSH connection to web <b>01</b> has been closed."_s);
    QCOMPARE(m_page->connectionPill().text(), u"Disconnected"_s);
    QVERIFY(!m_terminals->sessionState(server.id).isCurrentlyConnected);

    // The offer is there again for who comes back later.
    show(server);
    TerminalReconnectOverlay &again = m_page->wrapper().overlay();
    QVERIFY(again.isVisible());
    QCOMPARE(again.button().text(), u"Reconnect"_s);
    QTest::mouseClick(&again.button(), Qt::LeftButton);
    QVERIFY(shows(*terminal, u":~$"_s));
    QVERIFY(text(*terminal).contains(u"\u25c9 Reconnecting to web <b>01</b>..."_s));
    QVERIFY(!again.isVisible());
    QVERIFY(says(*terminal, "echo second-$((1+1))", u"second-2"_s));
}

void TestTerminalSessions::reconnectAfterAClientThatNeverStarted()
{
    const QString client = m_transport->sshPath;
    QVERIFY(QFile::rename(client, client + u".away"_s));
    const Server server = add(u"web"_s);
    show(server);
    QVERIFY(shows(view(server), u"Failed to start SSH"_s));
    // No connection was closed, and the operator can try again all the same.
    QVERIFY(!m_page->wrapper().overlay().isVisible());
    QVERIFY(!m_terminals->sessionState(server.id).shouldShowReconnect);
    QVERIFY(m_page->connectButton().isVisible());
    QVERIFY(QFile::rename(client + u".away"_s, client));
    m_page->connectButton().click();
    QVERIFY(shows(view(server), u":~$"_s));
    QVERIFY(!m_page->connectButton().isVisible());
}

void TestTerminalSessions::keysAreNotTakenForAnAnswer()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    QTRY_COMPARE(QApplication::focusWidget(), terminal);
    TerminalReconnectOverlay &overlay = m_page->wrapper().overlay();
    terminal->coordinator().terminalSends("exit\r");
    QTRY_VERIFY(overlay.isVisible());
    QCOMPARE(QApplication::focusWidget(), terminal);
    QTest::keyClick(terminal, Qt::Key_Return);
    QTest::keyClick(terminal, Qt::Key_Space);
    QVERIFY(overlay.isVisible());
    QTest::keyClick(terminal, Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), &overlay.button());
    QTest::keyClick(&overlay.button(), Qt::Key_Space);
    QTRY_VERIFY(!overlay.isVisible());
    QCOMPARE(QApplication::focusWidget(), terminal);
    QVERIFY(shows(*terminal, u":~$"_s));
    // Now it is the shell's.
    QTest::keyClick(terminal, Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), terminal);
}

void TestTerminalSessions::linksOpenOnlyAfterControlClick()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    QVERIFY(says(*terminal, "clear; echo https://exa''mple.org/a", u"https://example.org/a"_s));
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(u"https"_s, &catcher, "open");
    const QSize cell(terminal->width() / terminal->columns(), terminal->height() / terminal->rows());
    const QPoint place(5 * cell.width(), cell.height() / 2 + terminal->contentsRect().top());
    QTest::mouseClick(terminal, Qt::LeftButton, {}, place);
    QMouseEvent hover(QEvent::MouseMove, QPointF(place), terminal->mapToGlobal(QPointF(place)), Qt::NoButton,
                      Qt::NoButton, Qt::ControlModifier);
    QCoreApplication::sendEvent(terminal, &hover);
    const auto labels = terminal->findChildren<QLabel *>();
    QVERIFY(std::ranges::any_of(
        labels, [](const QLabel *each) { return each->isVisible() && each->text() == u"https://example.org/a"_s; }));
    QCOMPARE(catcher.opened, QList<QUrl>());
    QTest::mouseClick(terminal, Qt::LeftButton, Qt::ControlModifier, place);
    QCOMPARE(catcher.opened, QList<QUrl>{QUrl(u"https://example.org/a"_s)});
    QDesktopServices::unsetUrlHandler(u"https"_s);
}

void TestTerminalSessions::hostChangedWhileLive()
{
    RIG_NEEDS_ROOT();
    Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    const pid_t before = pid(server);
    server.username = m_sshd.sudoAccount();
    m_store->updateServer(server);
    QVERIFY(says(*terminal, "echo \"<$(whoami)>\"", u"<%1>"_s.arg(m_sshd.plainAccount())));
    QCOMPARE(pid(server), before);
    terminal->coordinator().terminalSends("exit\r");
    QTRY_VERIFY(m_page->wrapper().overlay().isVisible());
    m_page->wrapper().overlay().button().click();
    QVERIFY(shows(*terminal, u":~$"_s));
    QVERIFY(says(*terminal, "echo \"<$(whoami)>\"", u"<%1>"_s.arg(m_sshd.sudoAccount())));
}

void TestTerminalSessions::deletedServer()
{
    const Server server = add(u"web"_s);
    QVERIFY(open(server));
    const pid_t client = pid(server);
    m_store->deleteServer(server);
    QCOMPARE(m_terminals->terminalsOf(server.id), QList<QUuid>());
    QTRY_VERIFY(!isRunning(client));
    QVERIFY(!m_page->wrapper().host().terminal());
    m_page->wrapper().showTerminal();
    QVERIFY(!m_page->wrapper().host().terminal());
    QCOMPARE(m_terminals->terminalsOf(server.id), QList<QUuid>());
}

void TestTerminalSessions::quit()
{
    const Server one = add(u"one"_s);
    const Server two = add(u"two"_s);
    QVERIFY(open(one) && open(two));
    m_page->openTerminal();
    QTRY_COMPARE(m_transport->tracker.count(), 3);
    const QList<pid_t> clients{pid(one), pid(two)};
    ::kill(clients.first(), SIGSTOP);
    m_terminals->cleanupAll();
    QVERIFY(!isRunning(clients.first()) && !isRunning(clients.last()));
    QCOMPARE(m_transport->tracker.count(), 0);
    QTest::qWait(10);
}

void TestTerminalSessions::keyboardGoesToTheTerminal()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    QTRY_COMPARE(QApplication::focusWidget(), terminal);
    QTest::keyClicks(terminal, u"echo typed-$((2*3))"_s);
    QTest::keyClick(terminal, Qt::Key_Return);
    QVERIFY(shows(*terminal, u"typed-6"_s));
    m_page->find().field().setFocus();
    m_terminals->focusTerminal(server.id);
    QCOMPARE(QApplication::focusWidget(), terminal);

    // The far side knows the size that is on show.
    m_window->resize(640, 480);
    QTest::qWait(100);
    QVERIFY(says(*terminal, "stty size", u"%1 %2"_s.arg(terminal->rows()).arg(terminal->columns())));
}

void TestTerminalSessions::calmUnderAFlood()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    QVERIFY(says(*terminal, "PS1='he''re> '; clear", u"here>"_s));
    terminal->coordinator().terminalSends("yes\r");
    QVERIFY(QTest::qWaitFor([&] { return screen(*terminal).startsWith(u"y\ny\ny\n"_s); }, kPatience));

    // How long an input event waits for its turn; the middle one, since other programs run on this machine as well.
    QList<qint64> waits;
    for (int i = 0; i < 31; ++i) {
        QElapsedTimer posted;
        posted.start();
        bool isHandled = false;
        QMetaObject::invokeMethod(this, [&] { isHandled = true; }, Qt::QueuedConnection);
        while (!isHandled) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        waits.append(posted.elapsed());
        QTest::qWait(20);
        QVERIFY(terminal->pendingOutput() <= 1 << 20); // it is shown, and kept nowhere
    }
    std::ranges::sort(waits);
    QVERIFY2(waits.at(waits.size() / 2) < kInputWait, qPrintable(QString::number(waits.at(waits.size() / 2))));

    QElapsedTimer clock;
    clock.start();
    QTest::keyClick(terminal, Qt::Key_C, Qt::ControlModifier);
    QVERIFY(QTest::qWaitFor([&] { return screen(*terminal).contains(u"here>"_s); }, kPatience));
    const qint64 stopped = clock.elapsed();
    QVERIFY2(stopped < kInterruptWait, qPrintable(QString::number(stopped)));
    QVERIFY(says(*terminal, "echo al''ive", u"alive"_s));
}

void TestTerminalSessions::floodOfQueries()
{
    // A server that asks ten thousands of times and reads no answer fills nobody's memory, and what the operator
    // types then still arrives.
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    const QByteArray ask = R"sh(stty raw -echo; yes "$(printf '\033[c\033[6n')" | head -n 10000; stty sane)sh";
    QVERIFY(says(*terminal, ask + "; echo do''ne", u"done"_s));
}

void TestTerminalSessions::settingsLive()
{
    const Server server = add(u"web"_s);
    show(server);
    HostedTerminalView &terminal = view(server);
    AppSettings &settings = m_transport->settings;
    const QFont before = terminal.terminalFont();
    QVERIFY(QFontInfo(before).fixedPitch());
    settings.setTerminalFontSize(settings.terminalFontSize() + 7);
    QVERIFY(terminal.terminalFont().pointSizeF() > before.pointSizeF());
    settings.setTerminalFontFamily(u"Menlo"_s);
    QVERIFY(QFontInfo(terminal.terminalFont()).fixedPitch());

    QCOMPARE(terminal.colors().background, m_theme.tokens().surface);
    m_theme.setDark(true);
    QCOMPARE(terminal.colors().background, Tokens::dark().surface);
    QCOMPARE(terminal.colors().foreground, Tokens::dark().text);
    settings.setTerminalColorScheme(TerminalColorScheme::SolarizedLight);
    QCOMPARE(terminal.colors().background.toRgb(), QColor::fromRgbF(0.99F, 0.96F, 0.89F).toRgb());
    QCOMPARE(m_terminals->terminalColorScheme(server.id), TerminalColorScheme::SolarizedLight);
    m_theme.setDark(false);
    QCOMPARE(terminal.colors().background.toRgb(), QColor::fromRgbF(0.99F, 0.96F, 0.89F).toRgb());

    // What was zoomed stays zoomed while another setting changes.
    terminal.zoom(3);
    const qreal zoomed = terminal.terminalFont().pointSizeF();
    settings.setTerminalColorScheme(TerminalColorScheme::Dark);
    QCOMPARE(terminal.terminalFont().pointSizeF(), zoomed);
}

void TestTerminalSessions::newsWhileHidden()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    QVERIFY(says(*terminal, "echo seen''", u"seen"_s));
    QCOMPARE(m_terminals->news(server.id), TerminalNews::None);
    QSignalSpy news(m_terminals.get(), &GlobalTerminalSessionManager::newsChanged);
    terminal->coordinator().terminalSends("sleep 0.1; echo un''seen; sleep 0.1; printf '\\a'; echo bel''l\r");
    QTest::qWait(20);
    hide();
    QTRY_COMPARE(m_terminals->news(server.id), TerminalNews::Output);
    QTRY_COMPARE(m_terminals->news(server.id), TerminalNews::Bell);
    QCOMPARE(news.count(), 2);
    QVERIFY(shows(*terminal, u"bell"_s));
    QCOMPARE(m_terminals->news(server.id), TerminalNews::Bell);
    show(server);
    QCOMPARE(m_terminals->news(server.id), TerminalNews::None);
}

void TestTerminalSessions::moreTerminals()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const first = open(server);
    QVERIFY(first);
    QVERIFY(!m_page->tabs().isVisible());
    m_page->openTerminal();
    QVERIFY(m_page->tabs().isVisible());
    QCOMPARE(m_page->tabs().count(), 2);
    HostedTerminalView *const second = &view(server);
    QVERIFY(second != first);
    QCOMPARE(m_page->wrapper().host().terminal(), second);
    QVERIFY(shows(*second, u":~$"_s));
    QVERIFY(says(*second, "x=2; printf '\\033]0;two\\007'; echo o''k", u"ok"_s));
    QCOMPARE(m_page->tabs().tabText(1), u"two"_s);
    const pid_t client = pid(server);

    // One of them ends by itself: only there is another session offered.
    m_page->tabs().setCurrentIndex(0);
    QCOMPARE(m_page->wrapper().host().terminal(), first);
    first->coordinator().terminalSends("exit\r");
    QTRY_VERIFY(m_page->wrapper().overlay().isVisible());
    m_page->tabs().setCurrentIndex(1);
    QVERIFY(!m_page->wrapper().overlay().isVisible());

    // Both are there again after the section was left, the same one on show.
    show(server);
    QCOMPARE(m_page->tabs().count(), 2);
    QCOMPARE(m_page->wrapper().host().terminal(), second);
    QVERIFY(says(*second, "echo \"<$x>\"", u"<2>"_s));

    auto *const close = qobject_cast<QPushButton *>(m_page->tabs().tabButton(1, QTabBar::RightSide));
    QVERIFY(close);
    QVERIFY(!m_page->tabs().tabButton(0, QTabBar::RightSide));
    close->click();
    QTRY_VERIFY(!isRunning(client));
    QVERIFY(!m_page->tabs().isVisible());
    QCOMPARE(m_page->wrapper().host().terminal(), first);
}

void TestTerminalSessions::finding()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    QVERIFY(says(*terminal, "for i in 1 2 3; do echo nee''dle $i; done; seq 100; clear -x; echo en''d", u"end"_s));
    QTest::keyClick(terminal, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    TerminalFindField &find = m_page->find();
    QTRY_COMPARE(QApplication::focusWidget(), &find.field());
    QTest::keyClicks(&find.field(), u"needle"_s);
    QTRY_COMPARE(find.countText(), u"3 of 3"_s);
    QTest::keyClick(&find.field(), Qt::Key_Return);
    QTRY_COMPARE(find.countText(), u"2 of 3"_s);
    QTest::keyClick(&find.field(), Qt::Key_Return, Qt::ShiftModifier);
    QTRY_COMPARE(find.countText(), u"3 of 3"_s);
    find.field().setText(u"haystack"_s);
    QTRY_COMPARE(find.countText(), u"No hits"_s);
    QTest::keyClick(&find.field(), Qt::Key_Escape);
    QCOMPARE(find.countText(), QString());
    QTRY_COMPARE(QApplication::focusWidget(), terminal);
}

void TestTerminalSessions::clipboardNeedsConsent()
{
    QClipboard &clipboard = *QApplication::clipboard();
    clipboard.setText(u"mine"_s);
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    // "theirs", and asking for what is there.
    const QByteArray write = R"(printf '\033]52;c;dGhlaXJz\007\033]52;c;?\007'; echo ask''ed)";
    QVERIFY(says(*terminal, write, u"asked"_s));
    QTRY_VERIFY(m_page->clipboardRequest().isVisible());
    QCOMPARE(clipboard.text(), u"mine"_s);
    const auto press = [this](int button) {
        m_page->clipboardRequest().findChildren<QPushButton *>().at(button)->click();
    };
    press(0);
    QCOMPARE(clipboard.text(), u"mine"_s);
    QVERIFY(!m_page->clipboardRequest().isVisible());
    QVERIFY(says(*terminal, "clear; " + write, u"asked"_s));
    QTRY_VERIFY(m_page->clipboardRequest().isVisible());
    press(1);
    QCOMPARE(clipboard.text(), u"theirs"_s);
    clipboard.setText(u"mine"_s);
    QVERIFY(says(*terminal, "clear; " + write, u"asked"_s));
    QTRY_VERIFY(m_page->clipboardRequest().isVisible());
    QCOMPARE(clipboard.text(), u"mine"_s);
    press(2);
    clipboard.setText(u"mine"_s);
    QVERIFY(says(*terminal, "clear; " + write, u"asked"_s));
    QTRY_COMPARE(clipboard.text(), u"theirs"_s);
    QVERIFY(!text(*terminal).contains(u"bWluZQ"_s)); // "mine" was not told

    // The next session asks anew, and a second text does not take the place of the one on show.
    clipboard.setText(u"mine"_s);
    terminal->coordinator().reconnect();
    QVERIFY(shows(*terminal, u":~$"_s));
    QVERIFY(says(*terminal, R"(printf '\033]52;c;dGhlaXJz\007\033]52;c;b3RoZXI=\007'; echo tw''ice)", u"twice"_s));
    QTRY_VERIFY(m_page->clipboardRequest().isVisible());
    QVERIFY(m_page->clipboardRequest().accessibleName().contains(u"6 characters"_s));
    press(1);
    QCOMPARE(clipboard.text(), u"theirs"_s);
    QVERIFY(!m_page->clipboardRequest().isVisible());
}

void TestTerminalSessions::severalLinesAreAskedAbout()
{
    const Server server = add(u"web"_s);
    HostedTerminalView *const terminal = open(server);
    QVERIFY(terminal);
    QVERIFY(says(*terminal, "bind 'set enable-bracketed-paste off'; echo o''ff", u"off"_s));
    for (const bool pastes : {false, true}) {
        terminal->pasteText(u"echo <b>one</b>\necho pasted-$((3*3))\n"_s);
        QTRY_VERIFY(m_window->findChild<AlertDialog *>());
        auto &question = *m_window->findChild<AlertDialog *>();
        QVERIFY(!text(*terminal).contains(u"pasted-"_s));
        question.buttons().at(pastes ? 1 : 0)->click();
        QTRY_VERIFY(!m_window->findChild<AlertDialog *>());
    }
    QVERIFY(shows(*terminal, u"pasted-9"_s));
}

QTEST_MAIN(TestTerminalSessions)
#include "test_terminal_sessions.moc"
