#include "Helpers/ModuleLibrary.h"
#include "Views/Components/ChartLibrary.h"
#include "Views/Components/ChartReadOut.h"
#include "Views/Components/CompactMetricsCard.h"
#include "Views/Components/Disclosure.h"
#include "Views/Components/MetricChart.h"
#include "Views/Theme/Theme.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

QList<double> upTo(int count)
{
    QList<double> values;
    for (int i = 1; i <= count; ++i) {
        values.append(i);
    }
    return values;
}

// The pointer goes to the place of a sample, counted from the left edge. The offscreen platform's own pointer would
// leave again by itself.
void pointAt(MetricChart &chart, int x)
{
    const QPointF place(chart.width() * x / double(MetricChart::kSamples - 1), chart.height() / 2.0);
    QMouseEvent move(QEvent::MouseMove, place, chart.mapToGlobal(place), Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(&chart, &move);
}

} // namespace

/// Charts with the real library of theirs, and the parts of a page that open and close.
class TestMetricChart : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void placesOfTheLibrary();
    void aLibraryThatIsMissing();
    void newestAtTheRight();
    void roundMaxima_data();
    void roundMaxima();
    void drawsInTheThemesColours();
    void readsOutWhatIsPointedAt();
    void readsOutByKeyboard();
    void anotherNumberOfCurves();
    void cardKeepsItsPlace();
    void disclosure();

private:
    std::unique_ptr<MetricChart> shown(const QSize &size = {300, 80})
    {
        auto chart = std::make_unique<MetricChart>(m_theme, u"CPU"_s);
        chart->setFormat([](double value) { return QString::number(value) + u'%'; });
        chart->setAge([](qsizetype sample) { return u"sample %1"_s.arg(sample); });
        chart->resize(size);
        chart->show();
        return chart;
    }

    Theme m_theme;
};

void TestMetricChart::placesOfTheLibrary()
{
    const QTemporaryDir place;
    const QDir top(place.path());
    QVERIFY(top.mkpath(u"tree/tests/Views"_s) && top.mkpath(u"usr/bin"_s));
    QFile cache(top.filePath(u"tree/CMakeCache.txt"_s));
    QVERIFY(cache.open(QIODevice::WriteOnly));
    QCOMPARE(ModuleLibrary::directories(top.filePath(u"tree/tests/Views"_s)).last(), top.filePath(u"tree/lib"_s));
    const QStringList installed = ModuleLibrary::directories(top.filePath(u"usr/bin"_s));
    QCOMPARE(installed.size(), 1);
    QVERIFY2(installed.constFirst().startsWith(top.filePath(u"usr/lib"_s)), qPrintable(installed.constFirst()));
    QVERIFY(ChartLibrary::load().factory);
    QCOMPARE(ChartLibrary::load().factory, ChartLibrary::load().factory);
}

void TestMetricChart::aLibraryThatIsMissing()
{
    const QTemporaryDir place;
    const ChartLibrary::Loaded missing = ChartLibrary::loadFrom({place.path()});
    QVERIFY(!missing.factory);
    QCOMPARE(missing.error, u"libtarnwell_charts.so is missing"_s);
    QFile broken(place.filePath(u"libtarnwell_charts.so"_s));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("no library");
    broken.close();
    QVERIFY(!ChartLibrary::loadFrom({place.path()}).factory);
    QVERIFY(!ChartLibrary::loadFrom({place.path()}).error.isEmpty());
}

void TestMetricChart::newestAtTheRight()
{
    const auto chart = shown();
    QCOMPARE(chart->error(), QString());
    QVERIFY(chart->points(0).isEmpty());
    QCOMPARE(chart->accessibleDescription(), u"No samples yet"_s);

    chart->setSamples({{}}, {{10, 20}});
    QCOMPARE(chart->points(0), (QList<QPointF>{{58, 10}, {59, 20}}));
    QCOMPARE(chart->accessibleDescription(), u"Now 20%"_s);

    chart->setSamples({{}}, {upTo(70)});
    QCOMPARE(chart->points(0).size(), 60);
    QCOMPARE(chart->points(0).constFirst(), QPointF(0, 11));

    // What is outside of the range or no number does not leave the chart.
    chart->setSamples({{}}, {{-5, std::nan(""), 250, INFINITY}});
    QCOMPARE(chart->points(0), (QList<QPointF>{{56, 0}, {58, 100}}));
    QTest::qWait(20);
}

void TestMetricChart::roundMaxima_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("maximum");
    QTest::newRow("below the least") << 0.003 << 0.01;
    QTest::newRow("the least") << 0.01 << 0.01;
    QTest::newRow("two") << 0.011 << 0.02;
    QTest::newRow("five") << 4.2 << 5.0;
    QTest::newRow("ten") << 5.1 << 10.0;
    QTest::newRow("hundreds") << 120.0 << 200.0;
}

void TestMetricChart::roundMaxima()
{
    QFETCH(double, value);
    QFETCH(double, maximum);
    MetricChart chart(m_theme, u"Network"_s);
    chart.setAutomaticMaximum(0.01);
    chart.setSamples({{u"a"_s}, {u"b"_s}}, {{0}, {value}});
    QVERIFY(std::abs(chart.maximum() - maximum) < 1e-9);
    QCOMPARE(MetricChart::roundMaximum(0), 1.0);
    QCOMPARE(MetricChart::roundMaximum(INFINITY), 1.0);
}

void TestMetricChart::drawsInTheThemesColours()
{
    const auto chart = shown();
    const QList<double> half(60, 50.0);
    chart->setSamples({{{}, ToneName::Purple, true}}, {half});
    const auto at = [&](double share) {
        const QImage picture = chart->grab().toImage();
        return picture.pixelColor(picture.width() / 2, static_cast<int>(picture.height() * share));
    };
    const auto isNear = [](const QColor &a, const QColor &b) {
        return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) < 90;
    };
    QVERIFY2(isNear(at(0.5), Tokens::light().purple.color), qPrintable(at(0.5).name()));
    const QColor below = at(0.8);
    QVERIFY2(below != at(0.2) && !isNear(below, Tokens::light().purple.color), qPrintable(below.name()));
    m_theme.setDark(true);
    QVERIFY2(isNear(at(0.5), Tokens::dark().purple.color), qPrintable(at(0.5).name()));
    m_theme.setDark(false);
}

void TestMetricChart::readsOutWhatIsPointedAt()
{
    QWidget window;
    window.resize(400, 200);
    auto *chart = new MetricChart(m_theme, u"Network"_s, &window);
    chart->setGeometry(40, 60, 300, 80);
    chart->setFormat([](double value) { return QString::number(value); });
    chart->setAge([](qsizetype sample) { return u"sample %1"_s.arg(sample); });
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    chart->setSamples({{u"Receive"_s}, {u"Transmit"_s}}, {upTo(30), QList<double>(30, 7.0)});
    QVERIFY(chart->readOut().isEmpty());

    pointAt(*chart, 40);
    QCOMPARE(chart->readOut(), (QStringList{u"Receive 11"_s, u"Transmit 7"_s, u"sample 10"_s}));
    const auto *box = window.findChild<ChartReadOut *>();
    QVERIFY(box && box->isVisible());
    QVERIFY(window.rect().contains(box->geometry()));
    pointAt(*chart, 5); // left of the oldest
    QCOMPARE(chart->readOut().constLast(), u"sample 0"_s);
    pointAt(*chart, 59);
    QCOMPARE(chart->readOut().constFirst(), u"Receive 30"_s);
    QVERIFY(window.rect().contains(window.findChild<ChartReadOut *>()->geometry()));

    // A new sample moves under the pointer, and leaving ends it.
    chart->setSamples({{u"Receive"_s}, {u"Transmit"_s}}, {upTo(31), QList<double>(31, 7.0)});
    QCOMPARE(chart->readOut().constFirst(), u"Receive 31"_s);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(chart, &leave);
    QVERIFY(chart->readOut().isEmpty());
    QVERIFY(!window.findChild<ChartReadOut *>());
}

void TestMetricChart::readsOutByKeyboard()
{
    const auto chart = shown();
    QTest::keyClick(chart.get(), Qt::Key_Left); // without samples there is nothing to go to
    QVERIFY(chart->readOut().isEmpty());
    chart->setSamples({{}}, {{10, 20, 30}});
    chart->setFocus();
    QTest::keyClick(chart.get(), Qt::Key_Left);
    QCOMPARE(chart->readOut(), (QStringList{u"30%"_s, u"sample 2"_s}));
    QTest::keyClick(chart.get(), Qt::Key_Left);
    QCOMPARE(chart->readOut().constFirst(), u"20%"_s);
    QTest::keyClick(chart.get(), Qt::Key_Home);
    QCOMPARE(chart->readOut().constFirst(), u"10%"_s);
    QTest::keyClick(chart.get(), Qt::Key_Left);
    QCOMPARE(chart->readOut().constFirst(), u"10%"_s);
    QTest::keyClick(chart.get(), Qt::Key_End);
    QTest::keyClick(chart.get(), Qt::Key_Right);
    QCOMPARE(chart->readOut().constFirst(), u"30%"_s);
    QTest::keyClick(chart.get(), Qt::Key_Escape);
    QVERIFY(chart->readOut().isEmpty());
}

void TestMetricChart::anotherNumberOfCurves()
{
    const auto chart = shown();
    for (const int count : {1, 8, 0, 3}) {
        QList<MetricChart::Curve> curves;
        QList<QList<double>> values;
        for (int i = 0; i < count; ++i) {
            curves.append({u"GPU %1"_s.arg(i), ToneName::Blue, count == 1});
            values.append({10.0 * i, 50});
        }
        chart->setSamples(curves, values);
        QCOMPARE(chart->points(count - 1).size(), count > 0 ? 2 : 0);
        QVERIFY(!chart->grab().isNull());
    }
}

void TestMetricChart::cardKeepsItsPlace()
{
    CompactMetricsCard card(m_theme, u"Network"_s, CompactMetricsCard::LegendStyle::TwoLines);
    card.setLegend({{u"Receive"_s, ToneName::Green, u"1 B/s"_s}, {u"Transmit"_s, ToneName::Blue, u"2 B/s"_s}});
    card.setFigure(u"1.0%"_s);
    card.resize(260, 170);
    card.show();
    QCOMPARE(card.legend(), (QStringList{u"Receive 1 B/s"_s, u"Transmit 2 B/s"_s}));
    QCoreApplication::processEvents();
    const QRect place = card.chart().geometry();
    QVERIFY(place.height() >= 70);
    // The next sample's figures are longer, and nothing moves.
    card.setLegend({{u"Receive"_s, ToneName::Green, u"1234.5 MB/s"_s}, {u"Transmit"_s, ToneName::Blue, u"2 B/s"_s}});
    card.setFigure(u"100.0%"_s);
    QCoreApplication::processEvents();
    QCOMPARE(card.chart().geometry(), place);
    QCOMPARE(card.figure(), u"100.0%"_s);
}

void TestMetricChart::disclosure()
{
    int made = 0;
    Disclosure section(m_theme, u"Storage Devices"_s, Disclosure::Frame::Card, [&made](QWidget *parent) {
        ++made;
        return new QLabel(u"content"_s, parent);
    });
    connect(&section, &Disclosure::toggleRequested, &section, &Disclosure::setExpanded);
    section.resize(400, 200);
    section.show();
    QVERIFY(!section.content() && made == 0);
    QPushButton &header = section.header();
    QCOMPARE(header.accessibleName(), u"Storage Devices"_s);
    QCOMPARE(header.accessibleDescription(), u"Collapsed"_s);
    QVERIFY(header.focusPolicy() & Qt::TabFocus);

    QTest::keyClick(&header, Qt::Key_Space);
    QVERIFY(section.isExpanded() && section.content()->isVisible());
    QCOMPARE(header.accessibleDescription(), u"Expanded"_s);
    QTest::mouseClick(&header, Qt::LeftButton, {}, QPoint(60, 15)); // on the title's words
    QVERIFY(!section.isExpanded() && !section.content()->isVisible());
    QTest::keyClick(&header, Qt::Key_Return);
    QVERIFY(section.isExpanded());
    QCOMPARE(made, 1);
}

QTEST_MAIN(TestMetricChart)
#include "test_metric_chart.moc"
