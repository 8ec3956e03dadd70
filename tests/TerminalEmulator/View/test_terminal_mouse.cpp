// Mouse, selection, links, clipboard and search.

#include "TerminalEmulator/View/Pasting.h"
#include "TerminalEmulator/View/SafeLink.h"
#include "TerminalEmulator/View/ViewFixture.h"

#include <QClipboard>
#include <QDropEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QWheelEvent>

class TestTerminalMouse : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selects_data();
    void selects();
    void scrollsWhileSelecting();
    void reports();
    void turnsTheWheel();
    void opensLinksOnlyWithControl();
    void trustsFewAddresses_data();
    void trustsFewAddresses();
    void offersAMenu();
    void asksBeforeARiskyPaste_data();
    void asksBeforeARiskyPaste();
    void pastesDroppedFiles();
    void letsTheHostAskAndDecide();
    void clearsAllButThePrompt();
    void finds();
    void countsWhileOutputComes();

private:
    static void drag(ViewFixture &fixture, QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {});
};

void TestTerminalMouse::drag(ViewFixture &fixture, QPoint from, QPoint to, Qt::KeyboardModifiers modifiers)
{
    QTest::mousePress(&fixture.view, Qt::LeftButton, modifiers, from);
    QMouseEvent move(QEvent::MouseMove, QPointF(to), fixture.view.mapToGlobal(QPointF(to)), Qt::NoButton,
                     Qt::LeftButton, modifiers);
    QCoreApplication::sendEvent(&fixture.view, &move);
    QTest::mouseRelease(&fixture.view, Qt::LeftButton, modifiers, to);
}

void TestTerminalMouse::selects_data()
{
    QTest::addColumn<QString>("gesture");
    QTest::addColumn<QString>("selected");
    QTest::newRow("characters") << "drag" << "two three\nfou";
    QTest::newRow("backwards") << "back" << "two three\nfou";
    QTest::newRow("block") << "block" << "two\n six";
    QTest::newRow("word") << "double" << "three";
    QTest::newRow("line") << "triple" << "one two three";
    QTest::newRow("a click") << "click" << "";
}

void TestTerminalMouse::selects()
{
    QFETCH(QString, gesture);
    QFETCH(QString, selected);
    ViewFixture fixture;
    fixture.view.feed("one two three\r\nfour six seven\r\n");
    const QPoint half(fixture.at(1, 0).x() - fixture.at(0, 0).x(), 0);
    // From the left half of a cell to the right half of another.
    const QPoint from = fixture.at(4, 0) - half / 3;
    const QPoint to = fixture.at(2, 1) + half / 3;
    if (gesture == QStringLiteral("drag")) {
        drag(fixture, from, to);
    } else if (gesture == QStringLiteral("back")) {
        drag(fixture, to, from);
    } else if (gesture == QStringLiteral("block")) {
        drag(fixture, fixture.at(4, 0), fixture.at(7, 1), Qt::AltModifier);
    } else {
        const int clicks = gesture == QStringLiteral("click") ? 1 : gesture == QStringLiteral("double") ? 2 : 3;
        for (int each = 0; each < clicks; ++each) {
            QTest::mouseClick(&fixture.view, Qt::LeftButton, {}, fixture.at(9, 0));
        }
    }
    QCOMPARE(fixture.view.selectedText().trimmed(), selected);
    QGuiApplication::clipboard()->clear();
    QTest::keyClick(&fixture.view, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(QGuiApplication::clipboard()->text().trimmed(), selected);
    QVERIFY(fixture.recorder.take().isEmpty());
}

void TestTerminalMouse::scrollsWhileSelecting()
{
    ViewFixture fixture;
    for (int line = 0; line < 60; ++line) {
        fixture.view.feed("line\r\n");
    }
    QTest::mousePress(&fixture.view, Qt::LeftButton, {}, fixture.at(0, 5));
    const QPointF above(fixture.at(0, 0).x(), -40);
    QMouseEvent move(QEvent::MouseMove, above, fixture.view.mapToGlobal(above), Qt::NoButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&fixture.view, &move);
    QTRY_COMPARE(fixture.view.scrollPosition(), fixture.view.terminal().historySize());
    QTest::mouseRelease(&fixture.view, Qt::LeftButton, {}, above.toPoint());
    const int rest = fixture.view.scrollPosition();
    QTest::qWait(100);
    QCOMPARE(fixture.view.scrollPosition(), rest);
    QVERIFY(fixture.view.selectedText().count(QStringLiteral("line")) > 40);
}

void TestTerminalMouse::reports()
{
    ViewFixture fixture;
    fixture.view.feed("\x1b[?1002;1006h");
    fixture.recorder.take();
    drag(fixture, fixture.at(3, 2), fixture.at(5, 4));
    QCOMPARE(fixture.recorder.take(), QByteArray("\x1b[<0;4;3M\x1b[<32;6;5M\x1b[<0;6;5m"));
    QVERIFY(!fixture.view.hasSelection());
    // Shift keeps the mouse for the view.
    drag(fixture, fixture.at(3, 2), fixture.at(5, 4), Qt::ShiftModifier);
    QVERIFY(fixture.recorder.take().isEmpty());
    QVERIFY(fixture.view.hasSelection());
}

void TestTerminalMouse::turnsTheWheel()
{
    ViewFixture fixture;
    const auto turn = [&](int angle, Qt::KeyboardModifiers modifiers = {}) {
        const QPointF place = fixture.at(1, 1);
        QWheelEvent event(place, fixture.view.mapToGlobal(place), {}, {0, angle}, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&fixture.view, &event);
    };
    for (int line = 0; line < 40; ++line) {
        fixture.view.feed("line\r\n");
    }
    turn(120);
    QCOMPARE(fixture.view.scrollPosition(), 3);
    turn(-40); // a fine wheel
    QCOMPARE(fixture.view.scrollPosition(), 2);
    turn(-240);
    QCOMPARE(fixture.view.scrollPosition(), 0);
    fixture.view.feed("\x1b[?1049h\x1b[?1007h");
    turn(120);
    QCOMPARE(fixture.recorder.take(), QByteArray("\x1b[A\x1b[A\x1b[A"));
    fixture.view.feed("\x1b[?1000;1006h");
    turn(-120);
    QCOMPARE(fixture.recorder.take(), QByteArray("\x1b[<65;2;2M"));
    QSignalSpy sizes(&fixture.view, &vt::TerminalWidget::fontSizeChanged);
    turn(120, Qt::ControlModifier);
    QCOMPARE(sizes.count(), 1);
}

void TestTerminalMouse::opensLinksOnlyWithControl()
{
    ViewFixture fixture;
    fixture.view.feed("see https://example.org/a\r\n\x1b]8;;file:///bin/sh\x1b\\local\x1b]8;;\x1b\\");
    QSignalSpy opened(&fixture.view, &vt::TerminalWidget::linkActivated);
    const QPoint link = fixture.at(8, 0);
    QTest::mouseClick(&fixture.view, Qt::LeftButton, {}, link);
    QCOMPARE(opened.count(), 0);
    QMouseEvent move(QEvent::MouseMove, QPointF(link), fixture.view.mapToGlobal(QPointF(link)), Qt::NoButton,
                     Qt::NoButton, Qt::ControlModifier);
    QCoreApplication::sendEvent(&fixture.view, &move);
    auto *label = fixture.view.findChild<QLabel *>();
    QVERIFY(label->isVisible());
    QCOMPARE(label->text(), QStringLiteral("https://example.org/a"));
    QTest::mouseClick(&fixture.view, Qt::LeftButton, Qt::ControlModifier, link);
    QCOMPARE(opened.count(), 1);
    QCOMPARE(opened.constFirst().constFirst().toUrl(), QUrl(QStringLiteral("https://example.org/a")));
    QTest::mouseClick(&fixture.view, Qt::LeftButton, Qt::ControlModifier, fixture.at(2, 1));
    QCOMPARE(opened.count(), 1);
    QTest::keyRelease(&fixture.view, Qt::Key_Control);
    QVERIFY(!label->isVisible());
}

void TestTerminalMouse::trustsFewAddresses_data()
{
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("opened");
    QTest::newRow("web") << "https://example.org/?q=a#b" << "https://example.org/?q=a#b";
    QTest::newRow("mail") << "mailto:a@example.org?attach=/etc/passwd" << "mailto:a@example.org";
    QTest::newRow("file") << "file:///etc/passwd" << "";
    QTest::newRow("script") << "javascript:alert(1)" << "";
    QTest::newRow("a program's own scheme") << "vscode://x/y" << "";
    QTest::newRow("no host") << "http:///x" << "";
    QTest::newRow("an option") << "--help" << "";
}

void TestTerminalMouse::trustsFewAddresses()
{
    QFETCH(QString, uri);
    QFETCH(QString, opened);
    const std::optional<QUrl> url = vt::safeLink(uri.toStdString());
    QCOMPARE(url ? url->toString() : QString(), opened);
}

void TestTerminalMouse::offersAMenu()
{
    ViewFixture fixture;
    fixture.view.feed("http://example.org");
    const auto actions = [&](QPoint place) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, fixture.view.mapToGlobal(place));
        QCoreApplication::sendEvent(&fixture.view, &event);
        QStringList names;
        auto *menu = fixture.view.findChild<QMenu *>();
        if (menu) {
            const QList<QAction *> all = menu->actions();
            for (QAction *each : all) {
                names.append(each->isSeparator() ? QStringLiteral("-")
                                                 : each->text().section(QLatin1Char('\t'), 0, 0));
            }
            delete menu;
        }
        return names.join(QLatin1Char(' '));
    };
    QCOMPARE(actions(fixture.at(30, 5)), QStringLiteral("Copy Paste Select All - Find\u2026 Clear"));
    // None that opens a link: that takes the key that shows where it leads.
    QCOMPARE(actions(fixture.at(3, 0)), QStringLiteral("Copy Link - Copy Paste Select All - Find\u2026 Clear"));
    fixture.view.feed("\x1b[?1000h");
    QTRY_VERIFY(fixture.view.terminal().wantsMouse()); // what comes close behind other output is read in a later turn
    QCOMPARE(actions(fixture.at(3, 0)), QString());
}

void TestTerminalMouse::asksBeforeARiskyPaste_data()
{
    QTest::addColumn<bool>("bracketed");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("asks");
    QTest::addColumn<QByteArray>("sent");
    QTest::newRow("a word") << false << QStringLiteral("ls\t-l") << false << QByteArray("ls\t-l");
    QTest::newRow("lines") << false << QStringLiteral("ls\nrm x") << true << QByteArray("ls\rrm x");
    QTest::newRow("one line with its end") << false << QStringLiteral("ls\n") << true << QByteArray("ls\r");
    QTest::newRow("control characters") << false << QStringLiteral("a\x03\x1b[31mb") << true << QByteArray("a[31mb");
    QTest::newRow("lines in brackets") << true << QStringLiteral("ls\nrm\x1b[201~") << false
                                       << QByteArray("\x1b[200~ls\rrm[201~\x1b[201~");
}

void TestTerminalMouse::asksBeforeARiskyPaste()
{
    QFETCH(bool, bracketed);
    QFETCH(QString, text);
    QFETCH(bool, asks);
    QFETCH(QByteArray, sent);
    ViewFixture fixture;
    fixture.view.feed(bracketed ? "\x1b[?2004h" : "");
    QGuiApplication::clipboard()->setText(text);
    const auto paste = [&] {
        QTest::keyClick(&fixture.view, Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
        return fixture.view.findChild<QMessageBox *>();
    };
    QMessageBox *box = paste();
    QCOMPARE(box != nullptr, asks);
    if (box) {
        QVERIFY(fixture.recorder.take().isEmpty());
        QCOMPARE(box->windowModality(), Qt::WindowModal);
        QTest::keyClick(box, Qt::Key_Return); // the safe answer is the default one
        QVERIFY(fixture.recorder.take().isEmpty());
        QTRY_VERIFY(!fixture.view.findChild<QMessageBox *>());
        box = paste();
        const QList<QAbstractButton *> buttons = box->buttons();
        for (QAbstractButton *each : buttons) {
            if (box->buttonRole(each) == QMessageBox::AcceptRole) {
                each->click();
            }
        }
    }
    QCOMPARE(fixture.recorder.take(), sent);
}

void TestTerminalMouse::pastesDroppedFiles()
{
    ViewFixture fixture;
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/srv/plain.txt")),
                   QUrl::fromLocalFile(QStringLiteral("/srv/it's $HOME"))});
    QDragEnterEvent enter(fixture.at(1, 1), Qt::CopyAction, &files, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&fixture.view, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(fixture.at(1, 1), Qt::CopyAction, &files, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&fixture.view, &drop);
    QCOMPARE(fixture.recorder.take(), QByteArray("/srv/plain.txt '/srv/it'\\''s $HOME' "));
    QCOMPARE(vt::shellQuoted(QString()), QStringLiteral("''"));
}

/// A host that asks in its own way.
class AskingHost : public Recorder
{
public:
    std::function<void(bool)> answer;

    bool terminalAsksToPaste(const QString &, const std::function<void(bool)> &then) override
    {
        answer = then;
        return true;
    }
};

void TestTerminalMouse::letsTheHostAskAndDecide()
{
    AskingHost host;
    auto view = std::make_unique<vt::TerminalWidget>();
    view->setDelegate(&host);
    view->pasteText(QStringLiteral("a\nb"));
    QVERIFY(!view->findChild<QMessageBox *>());
    host.answer(true);
    QCOMPARE(host.take(), QByteArray("a\rb"));

    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    view->feed("\x1b]52;c;bmV3\x1b\\");
    QCOMPARE(host.clipboard, QStringList{QStringLiteral("new")});
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
    host.allowsClipboard = true;
    view->feed("\x1b]52;c;bmV3\x1b\\");
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("new"));

    view->pasteText(QStringLiteral("a\nb"));
    view.reset();
    host.answer(true); // too late
    QVERIFY(host.take().isEmpty());
}

void TestTerminalMouse::clearsAllButThePrompt()
{
    ViewFixture fixture;
    for (int line = 0; line < 30; ++line) {
        fixture.view.feed("line\r\n");
    }
    fixture.view.feed("$ typed");
    fixture.view.clear();
    QCOMPARE(fixture.view.terminal().historySize(), 0);
    QCOMPARE(fixture.row(0), QStringLiteral("$ typed"));
    QCOMPARE(fixture.view.terminal().cursor().row, 0);
    QCOMPARE(fixture.view.terminal().cursor().column, 7);
    // The application's own stream goes on where it was, and its margins mean nothing here.
    fixture.view.feed("\r\none\r\n\x1b[2;4r\x1b[44m\x1b[3;1H$ \x1b[4");
    fixture.view.clear();
    fixture.view.feed("1mred");
    QCOMPARE(fixture.row(0), QStringLiteral("$ red"));
    QCOMPARE(fixture.row(1), QString());
    const vt::Terminal &terminal = fixture.view.terminal();
    QCOMPARE(terminal.style(terminal.cell(0, 2).style).background.red, 1);
    QCOMPARE(terminal.style(terminal.cell(9, 0).style).background.kind, vt::Color::Kind::Default);
    QCOMPARE(terminal.historySize(), 0);
}

void TestTerminalMouse::finds()
{
    ViewFixture fixture;
    for (int line = 0; line < 3000; ++line) {
        fixture.view.feed("row " + QByteArray::number(line) + (line % 100 == 7 ? " Needle\r\n" : "\r\n"));
    }
    fixture.view.flushOutput();
    vt::SearchQuery query;
    query.text = "needle";
    QVERIFY(fixture.view.setSearch(query));
    QTRY_COMPARE(fixture.view.hitCount(), 30);
    QTRY_COMPARE(fixture.view.currentHit(), 30);
    fixture.view.findNext();
    QCOMPARE(fixture.view.currentHit(), 1);
    QVERIFY(fixture.view.scrollPosition() > 2900);
    fixture.view.findPrevious();
    fixture.view.findPrevious();
    QCOMPARE(fixture.view.currentHit(), 29);
    query.caseSensitive = true;
    QVERIFY(fixture.view.setSearch(query));
    QCOMPARE(fixture.view.hitCount(), 0);
    QCOMPARE(fixture.view.currentHit(), 0);
    query = {"row 1[0-9]{3}$", true, false, false};
    QVERIFY(fixture.view.setSearch(query));
    QTRY_COMPARE(fixture.view.hitCount(), 990);
    query.text = "(";
    QVERIFY(!fixture.view.setSearch(query));
    QCOMPARE(fixture.view.hitCount(), 0);
}

void TestTerminalMouse::countsWhileOutputComes()
{
    ViewFixture fixture;
    fixture.view.setScrollbackLimit(20);
    vt::SearchQuery query;
    query.text = "hit";
    QVERIFY(fixture.view.setSearch(query));
    fixture.view.feed("hit and hit\r\n");
    QTRY_COMPARE(fixture.view.hitCount(), 2);
    const QImage plain = [&] {
        fixture.view.setSearch({});
        ViewFixture::settle();
        return fixture.view.grab().toImage();
    }();
    fixture.view.setSearch(query);
    ViewFixture::settle();
    QVERIFY(fixture.view.grab().toImage() != plain); // they are marked
    for (int line = 0; line < 15; ++line) {
        fixture.view.feed("hit\r\n");
    }
    QTRY_COMPARE(fixture.view.hitCount(), 17);
    for (int line = 0; line < 40; ++line) {
        fixture.view.feed("nothing\r\n");
    }
    QTRY_COMPARE(fixture.view.hitCount(), 0); // gone with the lines
}

QTEST_MAIN(TestTerminalMouse)
#include "test_terminal_mouse.moc"
