#include "Views/SectionFixture.h"

#include "Views/Ports/PortsViewModel.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using Display = TableSectionViewModel::Display;

namespace
{

const QByteArray kList = "Netid State Recv-Q Send-Q Local Peer Process\n"
                         "udp UNCONN 0 0 0.0.0.0:68 0.0.0.0:*\n"
                         "tcp LISTEN 0 1 127.0.0.1:5432 0.0.0.0:* users:((\"postgres\",pid=70,fd=5))\n"
                         "tcp LISTEN 0 1 [::]:443 [::]:* users:((\"nginx\",pid=12,fd=6))\n"
                         "tcp LISTEN 0 1 0.0.0.0:443 0.0.0.0:* users:((\"nginx\",pid=12,fd=7))\n"
                         "tcp ESTABLISHED 0 0 10.0.0.1:50000 10.0.0.2:22 users:((\"ssh\",pid=99,fd=3))\n";

} // namespace

class TestPortsViewModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_fixture = std::make_unique<SectionFixture>();
        m_fixture->scripted.setAnswer([this](const QString &line) {
            return ScriptedServer::said(line.startsWith(u"ss "_s) ? m_list : QByteArray());
        });
        m_list = kList;
        m_model = std::make_unique<PortsViewModel>(m_fixture->monitored(), m_fixture->navigation);
        m_model->updateViewVisibility(true);
    }

    void cleanup()
    {
        m_model.reset();
        m_fixture.reset();
    }

    void rows();
    void twiceTheSame();
    void filters_data();
    void filters();
    void search();
    void nothingThere();
    void portsOfAProcess();
    void showProcess();

private:
    QString shown() const
    {
        QStringList ports;
        for (const PortInfo &port : m_model->filteredPorts()) {
            ports.append(port.localPort);
        }
        return ports.join(u' ');
    }

    std::unique_ptr<SectionFixture> m_fixture;
    std::unique_ptr<PortsViewModel> m_model;
    QByteArray m_list;
};

void TestPortsViewModel::rows()
{
    TableModel &table = m_model->table();
    QCOMPARE(m_model->autoRefreshTimer()->intervalAsDuration(), std::chrono::seconds(5));
    QVERIFY(m_model->autoRefreshTimer()->isActive());
    QCOMPARE(shown(), u"68 443 443 5432 50000"_s);
    QStringList titles;
    for (const ColumnLook &column : table.columns()) {
        titles.append(column.title);
    }
    QCOMPARE(titles.join(u'|'), u"Protocol|Port|Address|State|Process|Category"_s);
    QCOMPARE(SectionFixture::row(table, 0), u"udp|68|0.0.0.0|UNCONN||System"_s);
    QCOMPARE(SectionFixture::row(table, 1), u"tcp|443|::|LISTEN|nginx (12)|Web"_s);
    QCOMPARE(table.index(1, 0).data(TableModel::RowIdentifierRole), u"row_port_443"_s);
    QVERIFY(!table.cell(0, 3).tone);
    QCOMPARE(table.cell(1, 3).tone, ToneName::Green);
    QCOMPARE(table.cell(4, 3).tone, ToneName::Blue);
    QCOMPARE(m_model->stats().last(), (Stat{u"Total"_s, u"5"_s}));
}

void TestPortsViewModel::twiceTheSame()
{
    // Sockets that share a port look alike; each has a row, and rows stay over refreshes.
    m_list = kList + "udp UNCONN 0 0 0.0.0.0:68 0.0.0.0:*\n";
    m_model->refreshPorts();
    QCOMPARE(shown(), u"68 68 443 443 5432 50000"_s);
    const QString first = m_model->table().identityAt(0);
    m_model->refreshPorts();
    QCOMPARE(m_model->table().identityAt(0), first);
}

void TestPortsViewModel::filters_data()
{
    QTest::addColumn<PortFilter>("filter");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("kept");
    QTest::newRow("all") << PortFilter::All << u"All"_s << u"68 443 443 5432 50000"_s;
    QTest::newRow("listening") << PortFilter::Listening << u"Listening"_s << u"443 443 5432"_s;
    QTest::newRow("established") << PortFilter::Established << u"Established"_s << u"50000"_s;
    QTest::newRow("web") << PortFilter::Web << u"Web"_s << u"443 443"_s;
    QTest::newRow("database") << PortFilter::Database << u"Database"_s << u"5432"_s;
    QTest::newRow("system") << PortFilter::System << u"System"_s << u"68"_s;
}

void TestPortsViewModel::filters()
{
    QFETCH(PortFilter, filter);
    m_model->setActiveFilterIndex(static_cast<int>(filter));
    QTEST(m_model->filters().at(static_cast<int>(filter)), "label");
    QTEST(shown(), "kept");
}

void TestPortsViewModel::search()
{
    for (const auto &[text, kept] : {std::pair{u"43"_s, u"443 443 5432"_s},
                                     {u"NGINX"_s, u"443 443"_s},
                                     {u"UDP"_s, u"68"_s},
                                     {u"establ"_s, u"50000"_s},
                                     {u"0.0.0.0"_s, u""_s}}) { // addresses are not searched
        m_model->setSearchText(text);
        QCOMPARE(shown(), kept);
    }
    QCOMPARE(m_model->message().text, u"No ports match '0.0.0.0'"_s);
    m_model->setSearchText({});
    m_list = "Netid\n";
    m_model->setActiveFilterIndex(3);
    m_model->refreshPorts();
    QCOMPARE(m_model->message().text, u"No ports match 'Web'"_s);
}

void TestPortsViewModel::nothingThere()
{
    m_list.clear();
    m_model->refreshPorts();
    QCOMPARE(m_fixture->scripted.lines().last(), u"netstat -tulpn 2>/dev/null"_s);
    QCOMPARE(m_model->display(), Display::Empty);
    QVERIFY(!m_model->loadError());
}

void TestPortsViewModel::portsOfAProcess()
{
    m_model->setSearchText(u"udp"_s);
    m_model->setActiveFilterIndex(3);
    m_fixture->navigation.showPorts(12);
    QCOMPARE(shown(), u"443 443"_s);
    QCOMPARE(m_model->processFilter(), u"12"_s);
    m_model->setSearchText(u"68"_s);
    QCOMPARE(shown(), u""_s);
    m_fixture->navigation.showPorts(7);
    QVERIFY(m_model->message().text.startsWith(u"No listed port names process 7."_s));
    m_model->setProcessFilter({});
    QCOMPARE(m_model->table().shownCount(), 5);

    m_fixture->navigation.showPorts(12);
    m_fixture->setConnected(false); // the number is another process's in the next session
    m_fixture->setConnected(true);
    QCOMPARE(m_model->table().shownCount(), 5);
}

void TestPortsViewModel::showProcess()
{
    QSignalSpy spy(&m_fixture->navigation, &SectionNavigation::processRequested);
    TableModel &table = m_model->table();
    const int action = SectionFixture::actionOf(table, u"Show Process"_s);
    QVERIFY(!table.isOffered(0, action) && table.isOffered(1, action));
    table.prepared(1, action)();
    QCOMPARE(spy.value(0).value(0).toLongLong(), 12);
}

QTEST_GUILESS_MAIN(TestPortsViewModel)
#include "test_ports_view_model.moc"
