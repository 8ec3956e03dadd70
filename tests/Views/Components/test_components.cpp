#include "Views/Components/AlertDialog.h"
#include "Views/Components/KeyValueGrid.h"
#include "Views/Components/Labels.h"
#include "Views/Components/NoticeBar.h"
#include "Views/Components/PlainText.h"
#include "Views/Components/StatePage.h"
#include "Views/Components/TabularText.h"
#include "Views/Components/UsageBar.h"

#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>

using namespace Qt::StringLiterals;

namespace
{

constexpr QSize kFigureRoom(120, 24);

QImage figure(const QFont &font, const QString &text, qreal ratio = 1)
{
    QImage picture(kFigureRoom * ratio, QImage::Format_RGB32);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    TabularText(font).drawAtRight(painter, QRect(10, 0, 100, kFigureRoom.height()), text);
    return picture;
}

QRect ink(const QImage &picture)
{
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y).lightness() < 160) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

} // namespace

class TestComponents : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void markupStaysText();
    void controlCharactersBecomeBlanks();
    void elidesWithTheWholeInTheToolTip();
    void gridKeepsItsLabels();
    void figuresStandBelowOneAnother();
    void figuresAtEachPixelRatio();
    void figuresOfAllScripts_data();
    void figuresOfAllScripts();
    void barTellsHowFull_data();
    void barTellsHowFull();
    void noticesWaitTheirTurn();
    void statePageSwitches();
    void alertIsSafeByDefault();

private:
    Theme m_theme;
};

void TestComponents::markupStaysText()
{
    const QString hostile = u"<b>bold</b> & <img src=x>"_s;
    QVERIFY(Qt::mightBeRichText(hostile));
    QTextDocument shown;
    shown.setHtml(PlainText::toolTip(hostile));
    QCOMPARE(shown.toPlainText(), hostile);

    ElidedLabel label(m_theme, TextStyle::Body);
    label.setFullText(hostile);
    QCOMPARE(label.textFormat(), Qt::PlainText);
    QCOMPARE(label.text(), hostile);
}

void TestComponents::controlCharactersBecomeBlanks()
{
    QCOMPARE(PlainText::oneLine(u"a\nb\r\x1b[31m\x7f\u202Ec\u2028d"_s), u"a b  [31m  c d"_s);
    QCOMPARE(PlainText::oneLine(u"naïve 世界 🙂"_s), u"naïve 世界 🙂"_s);
}

void TestComponents::elidesWithTheWholeInTheToolTip()
{
    ElidedLabel label(m_theme, TextStyle::Mono, TextLabel::Shade::Text, Qt::ElideMiddle);
    label.setFullText(u"/var/lib/a/very/long/path/to/something"_s);
    label.resize(80, 20);
    label.show();
    QVERIFY(label.isElided());
    QVERIFY(label.toolTip().contains(u"/var/lib/a/very/long/path/to/something"_s));
    label.resize(600, 20);
    QVERIFY(!label.isElided());
    QVERIFY(label.toolTip().isEmpty());
}

void TestComponents::gridKeepsItsLabels()
{
    KeyValueGrid grid(m_theme);
    grid.setRows({{u"A"_s, u"1"_s}, {u"B"_s, u"2"_s}});
    const auto before = grid.findChildren<ElidedLabel *>();
    grid.setRows({{u"A"_s, u"3"_s}, {u"B"_s, u"4\n5"_s}});
    QCOMPARE(grid.findChildren<ElidedLabel *>(), before);
    QCOMPARE(grid.rows(), (KeyValueGrid::Rows{{u"A"_s, u"3"_s}, {u"B"_s, u"4 5"_s}}));
    QCOMPARE(before.at(1)->accessibleName(), u"B: 4 5"_s);
    grid.setRows({{u"A"_s, u"3"_s}});
    QCOMPARE(grid.rows().size(), 1);
}

void TestComponents::figuresStandBelowOneAnother()
{
    const QFont font = m_theme.font(TextStyle::Detail);
    const QRect behind(110 - QFontMetrics(font).horizontalAdvance(u".8"_s), 0, 20, kFigureRoom.height());
    const QImage one = figure(font, u"11111.8"_s);
    const QImage nine = figure(font, u"99999.8"_s);
    QCOMPARE(one.copy(behind), nine.copy(behind));
    QVERIFY(one != nine);
    // The same room for each digit, whatever the font gives it.
    QVERIFY(ink(nine).left() - ink(one).left() <= 0);
    QVERIFY(ink(one).left() - ink(nine).left() < 5);
    QVERIFY(ink(one).right() <= 109 && ink(one).right() >= 106);
}

void TestComponents::figuresAtEachPixelRatio()
{
    const QFont font = m_theme.font(TextStyle::Detail);
    const QImage once = figure(font, u"1733.5 MB"_s);
    const QImage twice = figure(font, u"1733.5 MB"_s, 2);
    const QRect wanted(ink(once).topLeft() * 2, ink(once).size() * 2);
    for (const int difference : {ink(twice).left() - wanted.left(), ink(twice).right() - wanted.right(),
                                 ink(twice).top() - wanted.top(), ink(twice).bottom() - wanted.bottom()}) {
        QVERIFY(std::abs(difference) <= 3);
    }
    // Drawn for these pixels, not enlarged.
    QVERIFY(twice.convertToFormat(QImage::Format_RGB32) != once.scaled(twice.size()));
}

void TestComponents::figuresOfAllScripts_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("hebrew") << u"שלום 12"_s;
    QTest::newRow("arabic digits") << u"٤٢"_s;
    QTest::newRow("minus sign") << u"−12.5 °C"_s;
    QTest::newRow("too long") << u"123 456 789 123 456 789 123 456 789"_s;
}

void TestComponents::figuresOfAllScripts()
{
    QFETCH(QString, text);
    const QRect drawn = ink(figure(m_theme.font(TextStyle::Detail), text));
    QVERIFY(drawn.isValid());
    QVERIFY(drawn.left() >= 9 && drawn.right() <= 110);
    QVERIFY(drawn.right() > 100);
}

void TestComponents::barTellsHowFull_data()
{
    QTest::addColumn<double>("percent");
    QTest::addColumn<ToneName>("tone");
    QTest::newRow("none") << 0.0 << ToneName::Accent;
    QTest::newRow("at the first limit") << 75.0 << ToneName::Accent;
    QTest::newRow("above the first") << 75.5 << ToneName::Orange;
    QTest::newRow("at the second limit") << 90.0 << ToneName::Orange;
    QTest::newRow("above the second") << 91.0 << ToneName::Red;
    QTest::newRow("too much") << 250.0 << ToneName::Red;
}

void TestComponents::barTellsHowFull()
{
    QFETCH(double, percent);
    QFETCH(ToneName, tone);
    UsageBar bar(m_theme);
    bar.resize(201, 40);
    bar.setUsage(u"/"_s, u"1 / 2"_s, u"(x)"_s, percent);
    const QImage picture = bar.grab().toImage();
    const auto at = [&](int x) { return picture.pixelColor(x, picture.height() - 3); };
    const QColor filled = m_theme.tone(tone).color;
    const int end = static_cast<int>(std::min(percent, 100.0) * 2);
    if (percent > 0) {
        QCOMPARE(at(end - 6), filled);
    }
    if (percent < 95) {
        QCOMPARE(at(end + 6), m_theme.tokens().soft);
    }
}

void TestComponents::noticesWaitTheirTurn()
{
    QWidget window;
    NoticeBar bar(m_theme, &window);
    window.show();
    QVERIFY(!bar.isVisible());
    bar.add({});
    bar.add(u"first <i>"_s);
    bar.add(u"second"_s);
    bar.add(u"first <i>"_s);
    QVERIFY(bar.isVisible());
    QCOMPARE(bar.notices(), (QStringList{u"first <i>"_s, u"second"_s}));
    auto *dismiss = bar.findChild<QPushButton *>();
    dismiss->click();
    QCOMPARE(bar.findChild<ElidedLabel *>()->text(), u"second"_s);
    dismiss->click();
    QVERIFY(!bar.isVisible());
}

void TestComponents::statePageSwitches()
{
    auto *content = new QLabel(u"content"_s);
    StatePage page(m_theme, content);
    page.resize(600, 400);
    page.show();
    QSignalSpy retries(&page, &StatePage::retryRequested);
    QCOMPARE(page.state(), StatePage::State::Content);
    QVERIFY(content->isVisible());

    page.showError({u"<b>Title"_s, u"text"_s, u"ssh: <detail>"_s});
    QVERIFY(!content->isVisible());
    QCOMPARE(page.message().detail, u"ssh: <detail>"_s);
    QVERIFY(page.button().isVisible());
    QCOMPARE(page.button().text(), u"Retry"_s);
    page.button().click();
    QCOMPARE(retries.size(), 1);

    page.showLoading({u"Loading"_s, {}, {}});
    QVERIFY(!page.button().isVisible());
    page.showContent();
    QVERIFY(content->isVisible());
    QVERIFY(page.message().title.isEmpty());
}

void TestComponents::alertIsSafeByDefault()
{
    QWidget window;
    window.show();
    for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
        QPointer dialog = new AlertDialog(m_theme,
                                          {.title = u"Delete?"_s,
                                           .text = u"<b>plain</b>"_s,
                                           .buttons = {{u"Delete"_s, ButtonKind::Danger}, {u"Cancel"_s}},
                                           .safeButton = 1},
                                          &window);
        QSignalSpy answers(dialog, &AlertDialog::answered);
        dialog->open();
        QVERIFY(QTest::qWaitForWindowExposed(dialog));
        QTest::keyClick(dialog, key);
        QCOMPARE(answers.size(), 1);
        QCOMPARE(answers.constFirst().constFirst().value<qsizetype>(), 1);
        QTRY_VERIFY(!dialog);
    }
}

QTEST_MAIN(TestComponents)
#include "test_components.moc"
