#include "Views/Components/Table/RecordTableModel.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

struct Item {
    QString id;
    double load = 0;
    QString name;
    bool isFolder = false;
};

using Model = RecordTableModel<Item>;

Model::Declaration declaration()
{
    Model::Declaration table;
    table.name = u"Items"_s;
    table.identity = &Item::id;
    table.rowIdentifier = [](const Item &item) { return u"row_"_s + item.id; };
    table.columns = {{.title = u"Id"_s, .text = &Item::id, .sortKey = [](const Item &i) { return i.id.toInt(); }},
                     {.title = u"Load"_s,
                      .text = [](const Item &i) { return QString::number(i.load); },
                      .sortKey = &Item::load,
                      .align = CellAlign::Right},
                     {.title = u"Name"_s, .text = &Item::name}};
    table.sortColumn = 1;
    table.sortOrder = Qt::DescendingOrder;
    return table;
}

QStringList ids(const TableModel &model)
{
    QStringList ids;
    for (int row = 0; row < model.rowCount(); ++row) {
        ids.append(model.identityAt(row));
    }
    return ids;
}

QStringList split(const QString &ids)
{
    return ids.split(u' ', Qt::SkipEmptyParts);
}

// "1:5.0:name 2:..."
QList<Item> items(const QString &text)
{
    QList<Item> items;
    for (const QString &one : split(text)) {
        const QStringList parts = one.split(u':');
        items.append({parts.value(0), parts.value(1).toDouble(), parts.value(2), false});
    }
    return items;
}

} // namespace

class TestTableModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keysCompare_data();
    void keysCompare();
    void sortsStably();
    void leadingAndTieKeys();
    void filters();
    void changesInPlace_data();
    void changesInPlace();
    void behavesAsANaiveModel();
    void equalIdentities();
    void heldRowsStay();
    void operatorsOrderBreaksTheHold();
    void statesOfRows();
    void actions();
    void clearing();
    void wantedSelection();
    void copiesAsText();
};

void TestTableModel::keysCompare_data()
{
    QTest::addColumn<SortKey>("a");
    QTest::addColumn<SortKey>("b");
    QTest::addColumn<int>("order");
    const auto row = [](const char *name, const SortKey &a, const SortKey &b, int order) {
        QTest::newRow(name) << a << b << order;
        QTest::addRow("%s, turned", name) << b << a << -order;
    };
    row("numbers by value", SortKey(9), SortKey(10.5), -1);
    row("no number comes first", SortKey(qQNaN()), SortKey(-1e300), -1);
    row("no numbers are alike", SortKey(qQNaN()), SortKey(qQNaN()), 0);
    row("nothing comes before all", SortKey(), SortKey(-qInf()), -1);
    row("numbers before words", SortKey(7), SortKey::text(u"1"_s), -1);
    row("words ignore case", SortKey::text(u"Beta"_s), SortKey::text(u"beta"_s), 0);
    row("words by code", SortKey::text(u"file10"_s), SortKey::text(u"File2"_s), -1);
    row("exact words don't ignore case", SortKey::exact(u"Beta"_s), SortKey::exact(u"alpha"_s), -1);
    row("names by their numbers", SortKey::natural(u"file2"_s), SortKey::natural(u"File10"_s), -1);
    row("names of another script", SortKey::natural(u"äpfel"_s), SortKey::natural(u"zebra"_s), -1);
}

void TestTableModel::keysCompare()
{
    QFETCH(SortKey, a);
    QFETCH(SortKey, b);
    QFETCH(int, order);
    const int result = SortKey::compare(a, b);
    QCOMPARE((result > 0) - (result < 0), order);
}

void TestTableModel::sortsStably()
{
    Model model(declaration());
    model.setRecords(items(u"4:1:b 3:9:a 2:1:a 1:9:B"_s));
    QCOMPARE(ids(model), split(u"3 1 4 2"_s)); // alike ones as they came
    QSignalSpy sorts(&model, &TableModel::sortChanged);
    model.sortBy(1);
    QCOMPARE(ids(model), split(u"4 2 3 1"_s));
    model.sortBy(2);
    QCOMPARE(ids(model), split(u"3 2 4 1"_s));
    model.sortBy(2);
    QCOMPARE(ids(model), split(u"4 1 3 2"_s));
    QCOMPARE(model.sortOrder(), Qt::DescendingOrder);
    model.sortBy(7);
    QCOMPARE(sorts.size(), 3);
}

void TestTableModel::leadingAndTieKeys()
{
    Model::Declaration table = declaration();
    table.leadingKey = [](const Item &item) { return item.isFolder ? 0 : 1; };
    table.tieKey = [](const Item &item) { return SortKey::natural(item.name); };
    Model model(table);
    QList<Item> records = items(u"1:5:file10 2:5:file2 3:7:z 4:0:b 5:0:a"_s);
    records[3].isFolder = records[4].isFolder = true;
    model.setRecords(records);
    QCOMPARE(ids(model), split(u"5 4 3 2 1"_s));
    model.setSort(1, Qt::AscendingOrder);
    QCOMPARE(ids(model), split(u"5 4 2 1 3"_s)); // only the column's own key is reversed
}

void TestTableModel::filters()
{
    Model model(declaration());
    QSignalSpy updates(&model, &TableModel::updated);
    model.setFilter([](const Item &item) { return item.load > 4; });
    model.setRecords(items(u"1:5 2:1 3:9"_s));
    QCOMPARE(ids(model), split(u"3 1"_s));
    QCOMPARE(model.total(), 3);
    QCOMPARE(model.shownCount(), 2);
    model.setRecords(items(u"1:2 2:8 3:9"_s));
    QCOMPARE(ids(model), split(u"3 2"_s));
    model.setFilter({});
    QCOMPARE(ids(model), split(u"3 2 1"_s));
    QCOMPARE(updates.size(), 4);
    QVERIFY(model.find(u"1"_s) && !model.find(u"9"_s));
}

void TestTableModel::changesInPlace_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("layouts");
    QTest::addColumn<int>("removals");
    QTest::addColumn<int>("insertions");
    QTest::newRow("values only") << u"1:3 2:2 3:1"_s << u"1:9 2:2 3:1"_s << 0 << 0 << 0;
    QTest::newRow("another order") << u"1:3 2:2 3:1"_s << u"1:1 2:2 3:3"_s << 1 << 0 << 0;
    QTest::newRow("rows go from everywhere") << u"1:5 2:4 3:3 4:2 5:1"_s << u"2:4 4:2"_s << 1 << 1 << 0;
    QTest::newRow("new rows everywhere") << u"2:4 4:2"_s << u"1:5 2:4 3:3 4:2 5:1"_s << 1 << 0 << 1;
    QTest::newRow("at the end") << u"1:5 2:4"_s << u"1:5 2:4 3:3"_s << 0 << 0 << 1;
    QTest::newRow("all others") << u"1:5 2:4"_s << u"3:5 4:4 5:1"_s << 0 << 1 << 1;
    QTest::newRow("all go") << u"1:5 2:4"_s << QString() << 0 << 1 << 0;
    QTest::newRow("everything at once") << u"1:5 2:4 3:3"_s << u"3:9 4:8 1:1"_s << 1 << 1 << 1;
}

void TestTableModel::changesInPlace()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    Model model(declaration());
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setRecords(items(before));
    QList<std::pair<QPersistentModelIndex, QString>> held;
    for (int row = 0; row < model.rowCount(); ++row) {
        held.append({model.index(row, 1), model.identityAt(row)});
    }
    QSignalSpy layouts(&model, &QAbstractItemModel::layoutChanged);
    QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy insertions(&model, &QAbstractItemModel::rowsInserted);
    model.setRecords(items(after));
    QTEST(static_cast<int>(layouts.size()), "layouts");
    QTEST(static_cast<int>(removals.size()), "removals");
    QTEST(static_cast<int>(insertions.size()), "insertions");
    for (const auto &[index, id] : held) {
        QCOMPARE(index.isValid(), model.rowOf(id) >= 0);
        QCOMPARE(index.row(), model.rowOf(id));
    }
}

// Random records, filters, sorts and holds against a model that does each step in the plainest way.
void TestTableModel::behavesAsANaiveModel()
{
    QRandomGenerator random(20240607);
    for (int run = 0; run < 40; ++run) {
        Model model(declaration());
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QList<Item> records;
        double least = -1;
        QHash<QString, QPersistentModelIndex> watched;
        QStringList heldOrder;
        for (int step = 0; step < 30; ++step) {
            const bool wasHeld = model.isHeld();
            bool isOperators = false;
            switch (random.bounded(5)) {
            case 0:
            case 1: {
                records.clear();
                for (int id = 0; id < 25; ++id) {
                    if (random.bounded(3) > 0) {
                        records.append({QString::number(id), double(random.bounded(6)), QString::number(id % 4)});
                    }
                }
                std::shuffle(records.begin(), records.end(), random);
                model.setRecords(records);
                break;
            }
            case 2:
                least = random.bounded(4) - 1;
                model.setFilter([least](const Item &item) { return item.load > least; });
                isOperators = true;
                break;
            case 3: {
                const auto order = random.bounded(2) ? Qt::AscendingOrder : Qt::DescendingOrder;
                const int column = random.bounded(3);
                isOperators = column != model.sortColumn() || order != model.sortOrder();
                model.setSort(column, order);
                break;
            }
            default:
                model.setHeld(!wasHeld);
            }

            QList<Item> wanted = records;
            const int column = model.sortColumn();
            const bool isRising = model.sortOrder() == Qt::AscendingOrder;
            std::ranges::stable_sort(wanted, [&](const Item &a, const Item &b) {
                const auto less = [column](const Item &x, const Item &y) {
                    return column == 0   ? x.id.toInt() < y.id.toInt()
                           : column == 1 ? x.load < y.load
                                         : x.name < y.name;
                };
                return isRising ? less(a, b) : less(b, a);
            });
            wanted.removeIf([&](const Item &item) { return item.load <= least; });
            QStringList order;
            for (const Item &item : wanted) {
                order.append(item.id);
            }
            QCOMPARE(model.shownCount(), order.size());
            QStringList shown = order;
            if (model.isHeld() && wasHeld && !isOperators) {
                shown = heldOrder;
                for (const QString &id : order) {
                    if (!shown.contains(id)) {
                        shown.append(id);
                    }
                }
            } else if (model.isHeld() && !wasHeld) {
                shown = heldOrder; // holding changes nothing by itself
            }
            QCOMPARE(ids(model), shown);
            QCOMPARE(model.isHoldingBack(), shown != order);
            for (int row = 0; row < model.rowCount(); ++row) {
                const auto is = [&](const Item &item) { return item.id == model.identityAt(row); };
                const auto record = std::ranges::find_if(records, is);
                QCOMPARE(model.isGone(row), record == records.end());
                if (record != records.end()) {
                    QCOMPARE(model.recordAt(row).load, record->load);
                }
            }
            for (auto it = watched.cbegin(); it != watched.cend(); ++it) {
                QCOMPARE(it->row(), model.rowOf(it.key()));
            }
            watched.clear();
            for (int row = 0; row < model.rowCount(); row += 2) {
                watched.insert(model.identityAt(row), model.index(row, 0));
            }
            heldOrder = ids(model);
        }
    }
}

void TestTableModel::equalIdentities()
{
    Model model(declaration());
    model.setRecords(items(u"1:3:a 1:2:b 1:1:c 2:0:d"_s));
    QCOMPARE(model.rowCount(), 4);
    QSet<QString> all;
    for (const QString &id : ids(model)) {
        all.insert(id);
    }
    QCOMPARE(all.size(), 4);
    QCOMPARE(model.find(u"1"_s)->name, u"a"_s);
    model.setRecords(items(u"1:3:a 1:2:b"_s));
    QCOMPARE(model.rowCount(), 2);

    QList<Item> many(20000, Item{.id = u"same"_s});
    QElapsedTimer clock;
    clock.start();
    model.setRecords(many);
    QCOMPARE(model.rowCount(), 20000);
    QVERIFY2(clock.elapsed() < 5000, "not in quadratic time");
}

void TestTableModel::heldRowsStay()
{
    Model model(declaration());
    QSignalSpy holding(&model, &TableModel::holdingBackChanged);
    model.setRecords(items(u"1:9 2:5 3:1"_s));
    model.setHeld(true);
    QVERIFY(!model.isHoldingBack());
    model.setRecords(items(u"1:2 3:8 4:99"_s));
    QCOMPARE(ids(model), split(u"1 2 3 4"_s));
    QCOMPARE(model.data(model.index(0, 1)).toString(), u"2"_s);
    QVERIFY(model.isGone(1) && !model.isGone(0));
    QCOMPARE(model.data(model.index(1, 1)).toString(), u"5"_s);
    QVERIFY(model.isHoldingBack());
    QCOMPARE(model.total(), 3);
    QVERIFY(!model.find(u"2"_s));

    model.setRecords(items(u"1:2 2:6 3:8 4:99"_s)); // it is back
    QVERIFY(!model.isGone(1));
    model.setRecords(items(u"1:2 3:8 4:99"_s));
    model.setHeld(false);
    QCOMPARE(ids(model), split(u"4 3 1"_s));
    QVERIFY(!model.isHoldingBack());
    QCOMPARE(holding.size(), 2);
}

void TestTableModel::operatorsOrderBreaksTheHold()
{
    Model model(declaration());
    model.setRecords(items(u"1:9 2:5 3:1"_s));
    model.setHeld(true);
    model.setRecords(items(u"1:2 3:8"_s));
    model.sortBy(0);
    QCOMPARE(ids(model), split(u"1 3"_s));
    model.setRecords(items(u"0:7 1:2 3:8"_s));
    QCOMPARE(ids(model), split(u"1 3 0"_s)); // still held
    model.setFilter([](const Item &item) { return item.load > 2; });
    QCOMPARE(ids(model), split(u"0 3"_s));
}

void TestTableModel::statesOfRows()
{
    Model model(declaration());
    model.setRecords(items(u"1:9 2:5"_s));
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    model.setError(u"2"_s, u"Operation not permitted"_s);
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.constFirst().constFirst().toModelIndex().row(), 1);
    model.setRecords(items(u"1:1 2:5"_s));
    QCOMPARE(model.errorAt(0), u"Operation not permitted"_s);
    model.setBusy(u"2"_s, true);
    QVERIFY(model.isBusy(0) && !model.isBusy(1));
    QVERIFY(model.errorAt(0).isEmpty());
    model.setBusy(u"2"_s, false);
    model.setError(u"2"_s, u"again"_s);
    model.setRecords(items(u"1:1"_s));
    model.setRecords(items(u"1:1 2:5"_s));
    QVERIFY(model.errorAt(0).isEmpty()); // it went with its row

    model.setHeld(true);
    model.setError(u"1"_s, u"it has ended"_s);
    model.setRecords({});
    QCOMPARE(model.errorAt(model.rowOf(u"1"_s)), u"it has ended"_s); // a shadow is still to be seen
    model.setHeld(false);
    model.setError(u"1"_s, u"nobody is there"_s);
    model.setRecords(items(u"1:1"_s));
    QVERIFY(model.errorAt(0).isEmpty());
}

void TestTableModel::actions()
{
    QStringList done;
    Model::Declaration table = declaration();
    table.actions = {
        {.label = u"Kill"_s,
         .isButton = true,
         .isOffered = [](const Item &i) { return i.load > 1; },
         .question = [](const Item &i) { return RowQuestion{.title = u"Kill?"_s, .text = i.name}; },
         .run = [&done](const Item &i) { done.append(i.name); }},
        {.label = u"Copy"_s,
         .isEnabled = [](const Item &i) { return !i.name.isEmpty(); },
         .run = [](const Item &) {}},
    };
    Model model(table);
    model.setRecords(items(u"1:9:old 2:1"_s));
    QCOMPARE(model.columnCount(), 4);
    QVERIFY(model.isOffered(0, 0) && !model.isOffered(1, 0));
    QVERIFY(model.isEnabled(0, 1) && !model.isEnabled(1, 1));
    QCOMPARE(model.question(0, 0)->text, u"old"_s);
    QVERIFY(!model.question(0, 1));

    const auto action = model.prepared(0, 0);
    model.setError(u"1"_s, u"refused"_s);
    model.setRecords(items(u"1:9:new"_s));
    action();
    QCOMPARE(done, QStringList{u"old"_s}); // what was asked about
    QVERIFY(model.errorAt(0).isEmpty());

    model.setBusy(u"1"_s, true);
    QVERIFY(model.isOffered(0, 0) && !model.isEnabled(0, 0));
    model.setBusy(u"1"_s, false);
    model.setHeld(true);
    model.setRecords({});
    QVERIFY(model.isGone(0) && !model.isOffered(0, 0));
}

void TestTableModel::clearing()
{
    int done = 0;
    Model::Declaration table = declaration();
    table.actions = {{.label = u"Kill"_s, .run = [&done](const Item &) { ++done; }}};
    Model model(table);
    model.setRecords(items(u"1:9 2:5"_s));
    model.requestSelection(u"2"_s);
    model.setBusy(u"1"_s, true);
    model.setHeld(true);
    const auto action = model.prepared(0, 0);
    QStringList atTheTime;
    connect(&model, &TableModel::aboutToClear, this, [&] { atTheTime = ids(model); });
    model.clear();
    QCOMPARE(atTheTime, split(u"1 2"_s));
    QCOMPARE(model.rowCount(), 0); // held or not
    QVERIFY(model.selectedIdentity().isEmpty() && !model.isHoldingBack());
    model.setRecords(items(u"1:9"_s));
    QVERIFY(!model.isBusy(0) && model.isHeld());
    action(); // of another origin
    QCOMPARE(done, 0);
    model.prepared(0, 0)();
    QCOMPARE(done, 1);
}

void TestTableModel::wantedSelection()
{
    Model model(declaration());
    QSignalSpy requests(&model, &TableModel::selectionRequested);
    model.requestSelection(u"3"_s);
    QVERIFY(requests.isEmpty());
    model.setRecords(items(u"1:9 3:1"_s));
    QCOMPARE(requests.takeFirst().constFirst().toInt(), 1);
    QCOMPARE(model.selected()->id, u"3"_s);
    model.requestSelection(u"1"_s);
    QCOMPARE(requests.takeFirst().constFirst().toInt(), 0);

    model.requestSelection(u"7"_s);
    model.sortBy(0); // brings no records
    model.setFilter({});
    model.setRecords(items(u"1:9 7:1"_s));
    QCOMPARE(requests.takeFirst().constFirst().toInt(), 1);
    model.setRecords(items(u"1:9"_s));
    model.requestSelection(u"7"_s);
    model.setRecords(items(u"1:9"_s));
    model.setRecords(items(u"1:9 7:1"_s)); // too late
    QVERIFY(requests.isEmpty());
}

void TestTableModel::copiesAsText()
{
    Model model(declaration());
    model.setRecords({{u"1"_s, 2, u"<b>a\tb\nc"_s}, {u"2"_s, 1, u"d"_s}});
    QCOMPARE(model.plainText({0, 1}), u"1\t2\t<b>a b c\n2\t1\td"_s);
    QVERIFY(model.plainText({}).isEmpty());
}

QTEST_GUILESS_MAIN(TestTableModel)
#include "test_table_model.moc"
