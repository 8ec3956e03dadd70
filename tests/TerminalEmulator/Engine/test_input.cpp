#include "Scene.h"

// What keys, mouse, paste and focus send in which mode.
class TestInput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keys_data();
    void keys();
    void mouse_data();
    void mouse();
    void pasteCannotBreakOut();
    void focusIsToldOnRequest();
    void theLocatorTellsWhatWasAskedFor();
};

namespace
{

vt::KeyEvent typed(char32_t character, uint8_t modifiers = 0, const char *text = nullptr)
{
    vt::KeyEvent event;
    event.character = character;
    event.modifiers = modifiers;
    if (text) {
        event.text = text;
    } else {
        vt::appendUtf8(event.text, character);
    }
    return event;
}

vt::KeyEvent special(vt::Key key, uint8_t modifiers = 0, vt::KeyEvent::Action action = vt::KeyEvent::Action::Press)
{
    vt::KeyEvent event;
    event.key = key;
    event.modifiers = modifiers;
    event.action = action;
    return event;
}

} // namespace

void TestInput::keys_data()
{
    using vt::Alt, vt::Control, vt::Key, vt::Shift;
    QTest::addColumn<QByteArray>("modes");
    QTest::addColumn<vt::KeyEvent>("event");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const char *modes, const vt::KeyEvent &event, const char *bytes) {
        QTest::newRow(name) << QByteArray(modes) << event << QByteArray(bytes);
    };
    row("letter", "", typed('a'), "a");
    row("letter beyond ascii", "", typed(U'\u00e9'), "\\xc3\\xa9");
    row("control letter", "", typed('c', Control, ""), "\\x03");
    row("control space", "", typed(' ', Control), "\\x00");
    row("control slash", "", typed('/', Control), "\\x1f");
    row("alt letter", "", typed('x', Alt), "^[x");
    row("alt control letter", "", typed('x', Alt | Control), "^[\\x18");
    row("up", "", special(Key::Up), "^[[A");
    row("up in application mode", "\x1b[?1h", special(Key::Up), "^[OA");
    row("control right", "", special(Key::Right, Control), "^[[1;5C");
    row("control right in application mode", "\x1b[?1h", special(Key::Right, Control), "^[[1;5C");
    row("home", "", special(Key::Home), "^[[H");
    row("delete", "", special(Key::Delete), "^[[3~");
    row("shift page up", "", special(Key::PageUp, Shift), "^[[5;2~");
    row("f1", "", special(Key::F1), "^[OP");
    row("shift f1", "", special(Key::F1, Shift), "^[[1;2P");
    row("f5", "", special(Key::F5), "^[[15~");
    row("f12 with all", "", special(Key::F12, Shift | Alt | Control), "^[[24;8~");
    row("backspace", "", special(Key::Backspace), "\\x7f");
    row("control backspace", "", special(Key::Backspace, Control), "\\x08");
    row("backspace as BS", "\x1b[?67h", special(Key::Backspace), "\\x08");
    row("shift tab", "", special(Key::Tab, Shift), "^[[Z");
    row("enter", "", special(Key::Enter), "\\x0d");
    row("enter in new line mode", "\x1b[20h", special(Key::Enter), "\\x0d\\x0a");
    row("keypad with number lock", "\x1b=", special(Key::Keypad5, vt::NumLocked), "5");
    row("keypad as application", "\x1b=", special(Key::Keypad5), "^[Ou");
    row("keypad as arrows", "", special(Key::Keypad8), "^[[A");
    row("keypad enter", "", special(Key::KeypadEnter), "\\x0d");
    row("a lone modifier", "", special(Key::LeftShift), "");
    row("locked keyboard", "\x1b[2h", typed('a'), "");
    row("modifyOtherKeys 1", "\x1b[>4;1m", typed('I', Control | Shift, ""), "^[[27;6;73~");
    row("modifyOtherKeys 1 leaves control letters", "\x1b[>4;1m", typed('i', Control, ""), "\\x09");
    row("modifyOtherKeys 2", "\x1b[>4;2m", typed('i', Control, ""), "^[[27;5;105~");
    row("modifyOtherKeys 2 enter", "\x1b[>4;2m", special(Key::Enter, Shift), "^[[27;2;13~");
    row("modifyOtherKeys in the other form", "\x1b[>4;2m\x1b[>4;1f", typed('i', Control, ""), "^[[105;5u");
    row("modifyCursorKeys 0", "\x1b[>1;0m", special(Key::Up, Shift), "^[[2A");
    row("modifyCursorKeys 0 in application mode", "\x1b[?1h\x1b[>1;0m", special(Key::Up, Shift), "^[O2A");
    row("modifyCursorKeys 3", "\x1b[>1;3m", special(Key::Up, Shift), "^[[>1;2A");
    row("modifyFunctionKeys 1", "\x1b[>2;1m", special(Key::F1, Shift), "^[[2P");
    row("modifyFunctionKeys off", "\x1b[>n", special(Key::F5, Shift), "^[[15~");
    row("progressive escape", "\x1b[>1u", special(Key::Escape), "^[[27u");
    row("progressive letter", "\x1b[>1u", typed('a'), "a");
    row("progressive control letter", "\x1b[>1u", typed('i', Control, ""), "^[[105;5u");
    row("progressive enter", "\x1b[>1u", special(Key::Enter), "\\x0d");
    row("progressive shift enter", "\x1b[>1u", special(Key::Enter, Shift), "^[[13;2u");
    row("progressive up", "\x1b[>1u", special(Key::Up), "^[[A");
    row("progressive control up", "\x1b[>1u", special(Key::Up, Control), "^[[1;5A");
    row("progressive f3", "\x1b[>1u", special(Key::F3), "^[[13~");
    row("progressive release", "\x1b[>3u", special(Key::Up, 0, vt::KeyEvent::Action::Release), "^[[1;1:3A");
    row("progressive release not asked", "\x1b[>1u", special(Key::Up, 0, vt::KeyEvent::Action::Release), "");
    row("progressive all", "\x1b[>8u", typed('a'), "^[[97u");
    row("progressive all with text", "\x1b[>24u", typed('A', Shift), "^[[97;2;65u");
    row("progressive alternates", "\x1b[>12u", typed('A', Shift), "^[[97:65;2u");
    row("progressive modifier key", "\x1b[>8u", special(Key::LeftControl, Control), "^[[57442;5u");
    row("progressive on the other screen only", "\x1b[>1u\x1b[?1049h", special(Key::Escape), "^[");
}

void TestInput::keys()
{
    QFETCH(QByteArray, modes);
    QFETCH(vt::KeyEvent, event);
    QFETCH(QByteArray, bytes);
    Scene scene;
    scene.feed(modes.toStdString());
    QCOMPARE(Scene::visible(scene.terminal.encodeKey(event)), bytes);
}

void TestInput::mouse_data()
{
    using Action = vt::MouseEvent::Action;
    using Button = vt::MouseButton;
    QTest::addColumn<QByteArray>("modes");
    QTest::addColumn<vt::MouseEvent>("event");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const char *modes, const vt::MouseEvent &event, const char *bytes) {
        QTest::newRow(name) << QByteArray(modes) << event << QByteArray(bytes);
    };
    const vt::MouseEvent press{Action::Press, Button::Left, 4, 2, 33, 40, 0};
    const vt::MouseEvent release{Action::Release, Button::Right, 4, 2, 33, 40, 0};
    const vt::MouseEvent drag{Action::Motion, Button::Left, 4, 2, 33, 40, vt::Shift};
    const vt::MouseEvent hover{Action::Motion, Button::None, 4, 2, 33, 40, 0};
    const vt::MouseEvent wheel{Action::Press, Button::WheelUp, 4, 2, 33, 40, 0};
    const vt::MouseEvent far{Action::Press, Button::Left, 300, 2, 33, 40, 0};
    row("nobody asked", "", press, "");
    row("X10", "\x1b[?9h", press, "^[[M %#");
    row("X10 has no release", "\x1b[?9h", release, "");
    row("normal", "\x1b[?1000h", release, "^[[M#%#");
    row("normal has no drag", "\x1b[?1000h", drag, "");
    row("drag", "\x1b[?1002h", drag, "^[[MD%#");
    row("drag has no hover", "\x1b[?1002h", hover, "");
    row("any", "\x1b[?1003h\x1b[?1006h", hover, "^[[<35;5;3M");
    row("sgr release", "\x1b[?1000;1006h", release, "^[[<2;5;3m");
    row("urxvt", "\x1b[?1000;1015h", press, "^[[32;5;3M");
    row("pixels", "\x1b[?1000;1016h", press, "^[[<0;34;41M");
    row("too far for one byte", "\x1b[?1000h", far, "");
    row("not for UTF-8", "\x1b[?1000;1005h", far, "^[[M \\xc5\\x8d#");
    row("wheel", "\x1b[?1000;1006h", wheel, "^[[<64;5;3M");
    row("wheel on the other screen", "\x1b[?1049h", wheel, "^[[A");
    row("wheel on the other screen, switched off", "\x1b[?1049h\x1b[?1007l", wheel, "");
    row("the newest mode counts", "\x1b[?1003h\x1b[?1000h", hover, "");
}

void TestInput::mouse()
{
    QFETCH(QByteArray, modes);
    QFETCH(vt::MouseEvent, event);
    QFETCH(QByteArray, bytes);
    Scene scene;
    scene.feed(modes.toStdString());
    QCOMPARE(Scene::visible(scene.terminal.encodeMouse(event)), bytes);
}

void TestInput::pasteCannotBreakOut()
{
    Scene scene;
    QCOMPARE(Scene::visible(scene.terminal.encodePaste("a\r\nb\nc\td")), "a\\x0db\\x0dc\\x09d");
    scene.feed("\x1b[?2004h");
    QCOMPARE(Scene::visible(scene.terminal.encodePaste("x\x1b[201~rm\x03\xc2\x9b"
                                                       "201~")),
             "^[[200~x[201~rm201~^[[201~");
}

void TestInput::focusIsToldOnRequest()
{
    Scene scene;
    QCOMPARE(scene.terminal.encodeFocus(true), std::string());
    scene.feed("\x1b[?1004h");
    QCOMPARE(Scene::visible(scene.terminal.encodeFocus(false)), "^[[O");
}

void TestInput::theLocatorTellsWhatWasAskedFor()
{
    using Action = vt::MouseEvent::Action;
    Scene scene(40, 10);
    const auto mouse = [&](Action action, vt::MouseButton button, int row, int column) {
        return Scene::visible(scene.terminal.encodeMouse({action, button, column, row, column * 8, row * 16, 0}));
    };
    QVERIFY(!scene.terminal.wantsMouse());
    scene.feed("\x1b[1'z");
    QVERIFY(scene.terminal.wantsMouseMotion());
    QCOMPARE(mouse(Action::Press, vt::MouseButton::Left, 2, 4), "");
    QCOMPARE(scene.ask("\x1b['|"), "^[[1;4;3;5&w");
    QCOMPARE(mouse(Action::Release, vt::MouseButton::Left, 2, 4), "");
    scene.feed("\x1b[1;3'{");
    QCOMPARE(mouse(Action::Press, vt::MouseButton::Middle, 3, 4), "^[[4;2;4;5&w");
    QCOMPARE(mouse(Action::Release, vt::MouseButton::Middle, 3, 5), "^[[5;0;4;6&w");
    // Leaving the rectangle is told once; a side that was left out is where the pointer is.
    scene.feed("\x1b[2;3;;20'w");
    QCOMPARE(mouse(Action::Motion, vt::MouseButton::None, 3, 19), "");
    QCOMPARE(mouse(Action::Motion, vt::MouseButton::None, 4, 19), "^[[10;0;5;20&w");
    QCOMPARE(mouse(Action::Motion, vt::MouseButton::None, 9, 39), "");
    // In pixels, and once.
    scene.feed("\x1b[2;1'z");
    QCOMPARE(mouse(Action::Press, vt::MouseButton::Right, 1, 2), "^[[6;1;17;17&w");
    QVERIFY(!scene.terminal.wantsMouse());
    scene.feed("\x1b[1'z\x1b"
               "c");
    QVERIFY(!scene.terminal.wantsMouse());
}

QTEST_GUILESS_MAIN(TestInput)
#include "test_input.moc"
