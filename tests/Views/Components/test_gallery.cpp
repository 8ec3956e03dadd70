#include "App/Gallery/Gallery.h"
#include "Views/Components/MetricChart.h"
#include "Views/Components/ModalWindow.h"
#include "Views/Theme/Theme.h"

#include <QAccessible>
#include <QApplication>
#include <QDirIterator>
#include <QImage>
#include <QRegularExpression>
#include <QScrollArea>
#include <QTest>

using namespace Qt::StringLiterals;

class TestGallery : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void everyControlIsNamed_data();
    void everyControlIsNamed();
    void everyControlIsReachable();
    void everyComponentIsThere();
    void followsTheTheme();

private:
    Theme m_theme;
};

void TestGallery::everyControlIsNamed_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("gallery") << 0;
    QTest::newRow("question") << 1;
    QTest::newRow("sheet") << 2;
}

void TestGallery::everyControlIsNamed()
{
    QFETCH(int, which);
    std::unique_ptr<QWidget> window;
    if (which == 0) {
        window = std::make_unique<Gallery>(m_theme);
    } else {
        window.reset(which == 1 ? GalleryWindows::question(m_theme, nullptr)
                                : GalleryWindows::sheet(m_theme, nullptr));
    }
    window->show();
    QStringList unnamed;
    int controls = 0;
    const auto visit = [&](auto &&self, QAccessibleInterface *item) -> void {
        const QAccessible::State state = item->state();
        const bool isControl = item->role() == QAccessible::PushButton || item->role() == QAccessible::Button ||
                               item->role() == QAccessible::CheckBox || item->role() == QAccessible::RadioButton ||
                               item->role() == QAccessible::EditableText || item->role() == QAccessible::Table ||
                               item->role() == QAccessible::Dialog ||
                               (state.focusable && item->role() != QAccessible::Cell);
        if (isControl && !state.invisible) {
            ++controls;
            if (item->text(QAccessible::Name).isEmpty()) {
                unnamed << QString::fromLatin1(item->object() ? item->object()->metaObject()->className() : "cell");
            }
        }
        for (int i = 0; i < item->childCount(); ++i) {
            if (QAccessibleInterface *child = item->child(i)) {
                self(self, child);
            }
        }
    };
    visit(visit, QAccessible::queryAccessibleInterface(window.get()));
    QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(u", "_s)));
    QVERIFY(controls >= (which == 0 ? 30 : 2));
}

// Tab leads to each enabled control and comes back to the first one.
void TestGallery::everyControlIsReachable()
{
    Gallery gallery(m_theme);
    gallery.show();
    QSet<QWidget *> wanted;
    for (QWidget *widget : gallery.findChildren<QWidget *>()) {
        if ((widget->focusPolicy() & Qt::TabFocus) && widget->isEnabled() && widget->isVisible() &&
            !widget->focusProxy()) {
            wanted.insert(widget);
        }
    }
    QVERIFY(wanted.size() > 20);
    gallery.setFocus();
    for (qsizetype tabs = 2 * wanted.size(); tabs > 0; --tabs) {
        QTest::keyClick(gallery.focusWidget() ? gallery.focusWidget() : &gallery, Qt::Key_Tab);
        wanted.remove(gallery.focusWidget());
    }
    QStringList left;
    for (const QWidget *widget : wanted) {
        left << QString::fromLatin1(widget->metaObject()->className()) + u' ' + widget->accessibleName();
    }
    QVERIFY2(left.isEmpty(), qPrintable(left.join(u", "_s)));
}

void TestGallery::everyComponentIsThere()
{
    const std::unique_ptr<ModalWindow> question(GalleryWindows::question(m_theme, nullptr));
    const std::unique_ptr<ModalWindow> sheet(GalleryWindows::sheet(m_theme, nullptr));
    Gallery gallery(m_theme);
    gallery.show();
    QCoreApplication::processEvents(); // charts wait for it
    auto *chart = gallery.findChild<MetricChart *>();
    chart->setFocus();
    QTest::keyClick(chart, Qt::Key_Left); // reads out
    QSet<QString> shown;
    for (const QWidget *widget : QApplication::allWidgets()) {
        for (const QMetaObject *of = widget->metaObject(); of; of = of->superClass()) {
            shown.insert(QString::fromLatin1(of->className()));
        }
    }
    shown.insert(u"TableSectionView"_s); // a SectionScaffold with what the gallery's table has

    static const QRegularExpression declared(u"^class (\\w+)[\\w ]* : public (\\w+)"_s,
                                             QRegularExpression::MultilineOption);
    static const QRegularExpression noWidget(u"^QObject$|^QAbstract|^QStyled|Layout$|Model$"_s);
    int components = 0;
    QStringList missing;
    QDirIterator headers(QStringLiteral(TARNWELL_COMPONENTS), {u"*.h"_s}, QDir::Files, QDirIterator::Subdirectories);
    while (headers.hasNext()) {
        QFile header(headers.next());
        QVERIFY(header.open(QFile::ReadOnly));
        const QString text = QString::fromUtf8(header.readAll());
        for (auto matches = declared.globalMatch(text); matches.hasNext();) {
            const QRegularExpressionMatch match = matches.next();
            if (!noWidget.match(match.captured(2)).hasMatch()) {
                ++components;
                if (!shown.contains(match.captured(1))) {
                    missing << match.captured(1);
                }
            }
        }
    }
    QVERIFY(components >= 30);
    QVERIFY2(missing.isEmpty(), qPrintable(missing.join(u", "_s)));
}

// A colour that is not the theme's would be the same in both.
void TestGallery::followsTheTheme()
{
    Gallery gallery(m_theme);
    gallery.show();
    const QImage light = gallery.picture();
    m_theme.setDark(true);
    QCoreApplication::processEvents();
    const QImage dark = gallery.picture();
    m_theme.setDark(false);
    QCOMPARE(light.size(), dark.size());
    const QColor surface = Tokens::light().surface;
    qsizetype white = 0;
    for (int y = 0; y < dark.height(); y += 3) {
        for (int x = 0; x < dark.width(); x += 3) {
            white += dark.pixelColor(x, y) == surface;
        }
    }
    QCOMPARE(white, 0);
}

QTEST_MAIN(TestGallery)
#include "test_gallery.moc"
