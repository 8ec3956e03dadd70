// Keys, from the event of the window system to the bytes the application gets.

#include "TerminalEmulator/View/ViewFixture.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QSignalSpy>

class TestTerminalKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sends_data();
    void sends();
    void leavesShortcutsToTheWindow_data();
    void leavesShortcutsToTheWindow();
    void zooms();
    void tellsReleasesAndRepeats();
    void takesTabs();
    void composes();
};

void TestTerminalKeys::sends_data()
{
    QTest::addColumn<QByteArray>("modes");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");

    const auto row = [](const char *name, const char *modes, int key, int modifiers, const QString &text,
                        const char *bytes) {
        QTest::newRow(name) << QByteArray(modes) << key << modifiers << text << QByteArray(bytes);
    };
    constexpr int Ctrl = Qt::ControlModifier;
    constexpr int Shift = Qt::ShiftModifier;
    constexpr int Alt = Qt::AltModifier;
    constexpr int Keypad = Qt::KeypadModifier;
    row("letter", "", Qt::Key_A, 0, QStringLiteral("a"), "a");
    row("capital", "", Qt::Key_A, Shift, QStringLiteral("A"), "A");
    row("umlaut", "", Qt::Key_Adiaeresis, 0, QStringLiteral("ä"), "ä");
    row("beyond the first plane", "", 0, 0, QStringLiteral("😀"), "😀");
    row("Control+C", "", Qt::Key_C, Ctrl, QStringLiteral("\x03"), "\x03");
    row("Control+letter of another script", "", Qt::Key_C, Ctrl, QString(), "\x03");
    row("Control+backslash", "", Qt::Key_Backslash, Ctrl, QStringLiteral("\x1c"), "\x1c");
    row("Control+Alt+letter", "", Qt::Key_X, Ctrl | Alt, QStringLiteral("\x18"), "\x1b\x18");
    row("Alt+letter", "", Qt::Key_B, Alt, QStringLiteral("b"),
        "\x1b"
        "b");
    row("Escape", "", Qt::Key_Escape, 0, QStringLiteral("\x1b"), "\x1b");
    row("Return", "", Qt::Key_Return, 0, QStringLiteral("\r"), "\r");
    row("Backspace", "", Qt::Key_Backspace, 0, QStringLiteral("\b"), "\x7f");
    row("Shift+Tab", "", Qt::Key_Backtab, Shift, QString(), "\x1b[Z");
    row("Up", "", Qt::Key_Up, 0, QString(), "\x1b[A");
    row("Up, application cursor", "\x1b[?1h", Qt::Key_Up, 0, QString(), "\x1bOA");
    row("Control+Left", "\x1b[?1h", Qt::Key_Left, Ctrl, QString(), "\x1b[1;5D");
    row("F5", "", Qt::Key_F5, 0, QString(), "\x1b[15~");
    row("Shift+F1", "", Qt::Key_F1, Shift, QString(), "\x1b[1;2P");
    row("Control+Alt+Delete", "", Qt::Key_Delete, Ctrl | Alt, QString(), "\x1b[3;7~");
    row("keypad digit", "", Qt::Key_5, Keypad, QStringLiteral("5"), "5");
    row("keypad arrow", "", Qt::Key_Up, Keypad, QString(), "\x1b[A");
    row("keypad plus, application keypad", "\x1b=", Qt::Key_Plus, Keypad, QStringLiteral("+"), "\x1bOk");
    row("modifyOtherKeys", "\x1b[>4;2m", Qt::Key_I, Ctrl, QStringLiteral("\t"), "\x1b[27;5;105~");
    row("progressive protocol", "\x1b[>1u", Qt::Key_I, Ctrl, QStringLiteral("\t"), "\x1b[105;5u");
    row("progressive protocol, Escape", "\x1b[>1u", Qt::Key_Escape, 0, QStringLiteral("\x1b"), "\x1b[27u");
    row("a modifier alone", "", Qt::Key_Shift, Shift, QString(), "");
}

void TestTerminalKeys::sends()
{
    QFETCH(QByteArray, modes);
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    ViewFixture fixture;
    fixture.view.feed(modes);
    fixture.recorder.take();
    QKeyEvent event(QEvent::KeyPress, key, Qt::KeyboardModifiers(modifiers), text);
    QCoreApplication::sendEvent(&fixture.view, &event);
    QCOMPARE(fixture.recorder.take(), bytes);
}

void TestTerminalKeys::leavesShortcutsToTheWindow_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<bool>("shell");
    QTest::newRow("Control+W") << int(Qt::Key_W) << int(Qt::ControlModifier) << true;
    QTest::newRow("Control+bracket") << int(Qt::Key_BracketLeft) << int(Qt::ControlModifier) << true;
    QTest::newRow("F1") << int(Qt::Key_F1) << 0 << true;
    QTest::newRow("Alt+F") << int(Qt::Key_F) << int(Qt::AltModifier) << true;
    QTest::newRow("copy") << int(Qt::Key_C) << int(Qt::ControlModifier | Qt::ShiftModifier) << true;
    QTest::newRow("Control+2") << int(Qt::Key_2) << int(Qt::ControlModifier) << false;
    QTest::newRow("Control+comma") << int(Qt::Key_Comma) << int(Qt::ControlModifier) << false;
    QTest::newRow("Control+Alt+S") << int(Qt::Key_S) << int(Qt::ControlModifier | Qt::AltModifier) << false;
    QTest::newRow("Control+Shift+N") << int(Qt::Key_N) << int(Qt::ControlModifier | Qt::ShiftModifier) << false;
}

void TestTerminalKeys::leavesShortcutsToTheWindow()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(bool, shell);
    ViewFixture fixture;
    QKeyEvent event(QEvent::ShortcutOverride, key, Qt::KeyboardModifiers(modifiers));
    event.ignore();
    QCoreApplication::sendEvent(&fixture.view, &event);
    QCOMPARE(event.isAccepted(), shell);
}

void TestTerminalKeys::zooms()
{
    ViewFixture fixture;
    QSignalSpy sizes(&fixture.view, &vt::TerminalWidget::fontSizeChanged);
    QTest::keyClick(&fixture.view, Qt::Key_Plus, Qt::ControlModifier);
    QTest::keyClick(&fixture.view, Qt::Key_Minus, Qt::ControlModifier);
    QTest::keyClick(&fixture.view, Qt::Key_Minus, Qt::ControlModifier);
    QTest::keyClick(&fixture.view, Qt::Key_0, Qt::ControlModifier);
    QList<qreal> told;
    for (const QVariantList &each : sizes) {
        told.append(each.constFirst().toReal());
    }
    QCOMPARE(told, (QList<qreal>{11, 10, 9, 10}));
    QVERIFY(fixture.recorder.take().isEmpty());
}

void TestTerminalKeys::tellsReleasesAndRepeats()
{
    ViewFixture fixture;
    fixture.view.feed("\x1b[>2u\x1b[=2u");
    fixture.recorder.take();
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier);
    QKeyEvent gap(QEvent::KeyRelease, Qt::Key_Up, Qt::NoModifier, QString(), true);
    QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier, QString(), true);
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_Up, Qt::NoModifier);
    for (QKeyEvent *each : {&press, &gap, &repeat, &release}) {
        QCoreApplication::sendEvent(&fixture.view, each);
    }
    QCOMPARE(fixture.recorder.take(), QByteArray("\x1b[A\x1b[1;1:2A\x1b[1;1:3A"));
}

void TestTerminalKeys::takesTabs()
{
    ViewFixture fixture;
    QTest::keyClick(&fixture.view, Qt::Key_Tab);
    QTest::keyClick(&fixture.view, Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(fixture.recorder.take(), QByteArray("\t\x1b[Z"));
    QVERIFY(fixture.view.hasFocus());
}

void TestTerminalKeys::composes()
{
    ViewFixture fixture;
    fixture.view.feed("\x1b[?25l\x1b[3;5H");
    ViewFixture::settle();
    const QRect cursor = fixture.view.inputMethodQuery(Qt::ImCursorRectangle).toRect();
    QVERIFY(cursor.contains(fixture.at(4, 2)));
    QVERIFY(fixture.view.inputMethodQuery(Qt::ImEnabled).toBool());

    const QImage before = fixture.view.grab().toImage();
    QInputMethodEvent preedit(QStringLiteral("ni"), {});
    QCoreApplication::sendEvent(&fixture.view, &preedit);
    QVERIFY(fixture.recorder.take().isEmpty());
    QVERIFY(fixture.view.grab().toImage() != before);

    QInputMethodEvent commit;
    commit.setCommitString(QStringLiteral("你\x1b"));
    QCoreApplication::sendEvent(&fixture.view, &commit);
    QCOMPARE(fixture.recorder.take(), QByteArray("你"));
    QCOMPARE(fixture.view.grab().toImage(), before);
}

QTEST_MAIN(TestTerminalKeys)
#include "test_terminal_keys.moc"
