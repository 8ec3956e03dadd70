#include "Views/Components/Labels.h"
#include "Views/Theme/Icons.h"
#include "Views/Theme/LineText.h"
#include "Views/Theme/Shaping.h"
#include "Views/Theme/Theme.h"

#include <QLineEdit>
#include <QPainter>
#include <QTest>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

// Relative luminance and contrast ratio, WCAG 2.1.
double luminance(const QColor &color)
{
    const auto linear = [](double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

} // namespace

class TestTheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordsCanBeRead_data();
    void wordsCanBeRead();
    void aSwitchReachesWindowsAtOnce();
    void everyIconIsThere();
    void iconsFollowThemeAndPixelRatio();
    void textIsShownAsItStands();
    void whatIsShaped_data();
    void whatIsShaped();
    void aLineLooksAsThePainterDrawsIt_data();
    void aLineLooksAsThePainterDrawsIt();
};

void TestTheme::wordsCanBeRead_data()
{
    QTest::addColumn<QColor>("words");
    QTest::addColumn<QColor>("ground");
    for (const auto &[mode, t] : {std::pair("light", Tokens::light()), std::pair("dark", Tokens::dark())}) {
        const std::pair<const char *, QColor> grounds[]{{"window", t.window},   {"side", t.side},
                                                        {"surface", t.surface}, {"raised", t.raised},
                                                        {"soft", t.soft},       {"selection", t.accent.soft}};
        for (const auto &[name, ground] : grounds) {
            QTest::addRow("%s: text on %s", mode, name) << t.text << ground;
            QTest::addRow("%s: dim on %s", mode, name) << t.dim << ground;
        }
        QTest::addRow("%s: primary button", mode) << t.onAccent << t.accent.color;
        int number = 0;
        for (const Tone &tone : {t.accent, t.green, t.red, t.orange, t.blue, t.purple, t.gray}) {
            QTest::addRow("%s: tone %d on its soft ground", mode, ++number) << tone.text << tone.soft;
            QTest::addRow("%s: tone %d on surface", mode, number) << tone.text << t.surface;
            QTest::addRow("%s: tone %d on window", mode, number) << tone.text << t.window;
        }
    }
}

void TestTheme::wordsCanBeRead()
{
    QFETCH(QColor, words);
    QFETCH(QColor, ground);
    const double ratio = contrast(words, ground);
    QVERIFY2(ratio >= 4.5, qPrintable(QString::number(ratio)));
}

void TestTheme::aSwitchReachesWindowsAtOnce()
{
    Theme theme;
    theme.install();
    QWidget window;
    TextLabel label(theme, TextStyle::Body, u"words"_s, TextLabel::Shade::Dim, &window);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.grab().toImage().pixelColor(90, 25), Tokens::light().window);

    theme.setDark(true);
    QTRY_COMPARE(window.grab().toImage().pixelColor(90, 25), Tokens::dark().window);
    QCOMPARE(label.palette().color(QPalette::PlaceholderText), Tokens::dark().dim);
    theme.setDark(false);
    QTRY_COMPARE(window.grab().toImage().pixelColor(90, 25), Tokens::light().window);
}

void TestTheme::everyIconIsThere()
{
    for (int i = 0; i <= static_cast<int>(IconName::Clipboard); ++i) {
        const QImage picture = Icons::pixmap(static_cast<IconName>(i), Qt::red, 16, 1).toImage();
        bool isPainted = false;
        for (int y = 0; y < picture.height() && !isPainted; ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                isPainted = isPainted || picture.pixelColor(x, y).alpha() > 100;
            }
        }
        QVERIFY2(isPainted, qPrintable(QString::number(i)));
    }
}

void TestTheme::iconsFollowThemeAndPixelRatio()
{
    Theme theme;
    const QIcon icon = Icons::icon(IconName::Server, theme);
    const auto strongest = [&] {
        QImage canvas(32, 32, QImage::Format_ARGB32_Premultiplied);
        canvas.setDevicePixelRatio(2);
        canvas.fill(Qt::transparent);
        QPainter painter(&canvas);
        icon.paint(&painter, QRect(0, 0, 16, 16));
        painter.end();
        QColor found;
        for (int y = 0; y < 32; ++y) {
            for (int x = 0; x < 32; ++x) {
                const QColor color = canvas.pixelColor(x, y);
                if (color.alpha() == 255) {
                    found = color;
                }
            }
        }
        return found;
    };
    QCOMPARE(strongest(), Tokens::light().text);
    theme.setDark(true);
    QCOMPARE(strongest(), Tokens::dark().text);
    QCOMPARE(Icons::pixmap(IconName::Server, Qt::black, 16, 2).size(), QSize(32, 32));
    QCOMPARE(Icons::pixmap(IconName::Server, Qt::black, 16, 1).size(), QSize(16, 16));
}

// Inter has a cross for the x of a number and arrows for signs: none of that may become of a command line or a name.
void TestTheme::textIsShownAsItStands()
{
    const QFontMetricsF metrics(Theme().font(TextStyle::Body));
    for (const QString &text : {u"0x1F"_s, u"a->b"_s, u"1920x1080"_s, u"<-=>"_s}) {
        qreal alone = 0;
        for (const QChar character : text) {
            alone += metrics.horizontalAdvance(character);
        }
        QCOMPARE(metrics.horizontalAdvance(text), alone);
    }
    // What cannot be read so is shaped: lam and alef are one sign together.
    const QString lamAlef = u"\u0644\u0627"_s;
    const auto widthOf = [](const QString &text) { return LineText(text, Theme().font(TextStyle::Body)).width(); };
    QVERIFY(widthOf(lamAlef) < widthOf(lamAlef.first(1)) + widthOf(lamAlef.last(1)));
    QLineEdit field;
    field.ensurePolished();
    field.setText(u"deploy 1 "_s + lamAlef);
    QCOMPARE(field.font().styleStrategy(), QFont::PreferDefault);
    field.setText(u"0x1F"_s);
    QCOMPARE(field.font().styleStrategy(), QFont::PreferNoShaping);
}

void TestTheme::whatIsShaped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isNeeded");

    QTest::newRow("ASCII") << u"a->b 0x1F <=>"_s << false;
    QTest::newRow("European") << u"\u00e4\u00df \u03a9 \u0416 \u20ac \u2026"_s << false;
    QTest::newRow("East Asian") << u"\u4e2d\u6587 \u3042 \uac00"_s << false;
    QTest::newRow("one emoji") << u"\U0001f680"_s << false;
    QTest::newRow("half a character") << QString(QChar(0xd83d)) << false;
    QTest::newRow("combined accent") << u"e\u0301"_s << true;
    QTest::newRow("Arabic") << u"x \u0644\u0627"_s << true;
    QTest::newRow("Devanagari") << u"\u0915\u094d\u0937"_s << true;
    QTest::newRow("jamo") << u"\u1100\u1161"_s << true;
    QTest::newRow("flag") << u"\U0001f1e9\U0001f1ea"_s << true;
    QTest::newRow("skin tone") << u"\U0001f44d\U0001f3fd"_s << true;
    QTest::newRow("joined emoji") << u"\U0001f469\u200d\U0001f4bb"_s << true;
}

void TestTheme::whatIsShaped()
{
    QFETCH(const QString, text);
    QTEST(Shaping::isNeeded(text), "isNeeded");
}

void TestTheme::aLineLooksAsThePainterDrawsIt_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("room");
    QTest::addColumn<Qt::Alignment>("alignment");
    QTest::newRow("fits") << u"deploy@10.0.0.1"_s << 180 << Qt::Alignment(Qt::AlignLeft);
    QTest::newRow("at the right") << u"Ctrl+1"_s << 180 << Qt::Alignment(Qt::AlignRight);
    QTest::newRow("too long") << u"a server's name that is far too long for its row"_s << 90
                              << Qt::Alignment(Qt::AlignLeft);
    QTest::newRow("no room") << u"name"_s << 3 << Qt::Alignment(Qt::AlignLeft);
    QTest::newRow("from right to left") << u"\u05e9\u05e8\u05ea 12"_s << 180 << Qt::Alignment(Qt::AlignLeft);
    QTest::newRow("nothing") << QString() << 180 << Qt::Alignment(Qt::AlignLeft);
}

void TestTheme::aLineLooksAsThePainterDrawsIt()
{
    QFETCH(QString, text);
    QFETCH(int, room);
    QFETCH(Qt::Alignment, alignment);
    const QFont font = Shaping::fit(Theme().font(TextStyle::Emphasis), text);
    const QRect rect(5, 3, room, 31);
    QCOMPARE(LineText(text, font).width(), QFontMetrics(font).horizontalAdvance(text));
    const auto picture = [&](const auto &paint) {
        QImage image(200, 40, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setLayoutDirection(Qt::LeftToRight);
        paint(painter);
        return image;
    };
    QCOMPARE(picture([&](QPainter &painter) { LineText(text, font).paint(painter, rect, alignment); }),
             picture([&](QPainter &painter) {
                 painter.setFont(font);
                 painter.drawText(rect, static_cast<int>(alignment | Qt::AlignVCenter) | Qt::TextSingleLine,
                                  QFontMetrics(font).elidedText(text, Qt::ElideRight, room));
             }));
}

QTEST_MAIN(TestTheme)
#include "test_theme.moc"
