#include "Views/Components/SegmentedControl.h"
#include "Views/Components/Sheet.h"
#include "Views/Theme/Theme.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

class TestSheet : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void init();
    void cleanup();

    void returnAndEscape_data();
    void returnAndEscape();
    void pressesWhatHasTheKeyboard();
    void withoutADefaultReturnDoesNothing();
    void beginsInTheBody();
    void staysInTheMiddleAndFits();
    void dimsTheWindowMeanwhile();

private:
    Theme m_theme;
    std::unique_ptr<QWidget> m_window;
    QPointer<Sheet> m_sheet;
    QLineEdit *m_field = nullptr;
    QPlainTextEdit *m_lines = nullptr;
    QPushButton *m_test = nullptr;
    QPushButton *m_cancel = nullptr;
    QPushButton *m_save = nullptr;
};

void TestSheet::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->resize(900, 600);
    m_window->show();
    m_sheet = new Sheet(m_theme, u"Edit <b>"_s, m_window.get());
    m_field = new QLineEdit;
    m_lines = new QPlainTextEdit;
    m_lines->setFixedHeight(60);
    m_lines->setTabChangesFocus(true);
    m_sheet->body().addWidget(m_field);
    m_sheet->body().addWidget(m_lines);
    m_test = m_sheet->addButton(u"Test"_s, Sheet::Side::Left);
    m_cancel = m_sheet->addButton(u"Cancel"_s, Sheet::Side::Right);
    m_save = m_sheet->addButton(u"Save"_s, Sheet::Side::Right, ButtonKind::Primary);
    connect(m_cancel, &QPushButton::clicked, m_sheet, &QDialog::reject);
}

void TestSheet::cleanup()
{
    m_window.reset();
    QVERIFY(!m_sheet);
}

void TestSheet::returnAndEscape_data()
{
    QTest::addColumn<bool>("inLines");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<int>("saves");
    QTest::addColumn<bool>("isClosed");
    QTest::newRow("Return in a field") << false << Qt::Key_Return << Qt::KeyboardModifiers() << 1 << false;
    QTest::newRow("Enter in a field") << false << Qt::Key_Enter << Qt::KeyboardModifiers(Qt::KeypadModifier) << 1
                                      << false;
    QTest::newRow("Return in lines") << true << Qt::Key_Return << Qt::KeyboardModifiers() << 0 << false;
    QTest::newRow("Ctrl+Return in lines")
        << true << Qt::Key_Return << Qt::KeyboardModifiers(Qt::ControlModifier) << 1 << false;
    QTest::newRow("Escape") << true << Qt::Key_Escape << Qt::KeyboardModifiers() << 0 << true;
}

void TestSheet::returnAndEscape()
{
    QFETCH(bool, inLines);
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    m_sheet->setDefaultButton(m_save);
    QSignalSpy saves(m_save, &QPushButton::clicked);
    m_sheet->open();
    QWidget *place = inLines ? static_cast<QWidget *>(m_lines) : m_field;
    place->setFocus();
    QTest::keyClick(place, key, modifiers);
    QTEST(static_cast<int>(saves.size()), "saves");
    QFETCH(bool, isClosed);
    if (isClosed) {
        QTRY_VERIFY(!m_sheet);
    } else {
        QVERIFY(m_sheet && m_sheet->isVisible());
    }
}

void TestSheet::pressesWhatHasTheKeyboard()
{
    m_sheet->setDefaultButton(m_save);
    QSignalSpy saves(m_save, &QPushButton::clicked);
    QSignalSpy tests(m_test, &QPushButton::clicked);
    m_sheet->open();
    m_test->setFocus();
    QTest::keyClick(m_test, Qt::Key_Return);
    QCOMPARE(tests.size(), 1);
    m_save->setEnabled(false);
    QTest::keyClick(m_field, Qt::Key_Return);
    QCOMPARE(saves.size(), 0);
}

void TestSheet::withoutADefaultReturnDoesNothing()
{
    QSignalSpy tests(m_test, &QPushButton::clicked);
    m_sheet->open();
    QTest::keyClick(m_field, Qt::Key_Return);
    QCOMPARE(tests.size(), 0);
    QVERIFY(m_sheet->isVisible());
}

void TestSheet::beginsInTheBody()
{
    m_sheet->open();
    QCOMPARE(m_sheet->focusWidget(), m_field);
}

void TestSheet::staysInTheMiddleAndFits()
{
    const auto offset = [this] {
        return m_sheet->frameGeometry().center() - m_window->mapToGlobal(m_window->rect().center());
    };
    m_sheet->open();
    QVERIFY(QTest::qWaitForWindowExposed(m_sheet));
    QVERIFY(offset().manhattanLength() <= 2);
    const int before = m_sheet->height();
    const auto *area = m_sheet->findChild<QScrollArea *>();
    QCOMPARE(area->verticalScrollBar()->maximum(), 0);

    auto *more = new QWidget;
    more->setFixedHeight(100);
    m_sheet->body().addWidget(more);
    QTRY_VERIFY(m_sheet->height() >= before + 100);
    QVERIFY(offset().manhattanLength() <= 2);
    QCOMPARE(area->verticalScrollBar()->maximum(), 0);

    more->setFixedHeight(2000);
    QTRY_VERIFY(area->verticalScrollBar()->maximum() > 0);
    QVERIFY(m_sheet->height() < m_window->height());
    m_window->resize(800, 500);
    QTRY_VERIFY(m_sheet->height() < 500);
    QVERIFY(offset().manhattanLength() <= 2);
}

void TestSheet::dimsTheWindowMeanwhile()
{
    const auto corner = [this] { return m_window->grab().toImage().pixelColor(3, 3); };
    const QColor before = corner();
    m_sheet->open();
    QVERIFY(corner().lightness() < before.lightness());
    m_sheet->reject();
    QCOMPARE(corner(), before);
}

QTEST_MAIN(TestSheet)
#include "test_sheet.moc"
