#include "Views/Components/AlertDialog.h"
#include "Views/Components/Table/RecordDelegate.h"
#include "Views/Components/Table/RecordTable.h"
#include "Views/Components/Table/RecordTableModel.h"
#include "Views/Theme/Theme.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

struct Item {
    QString id;
    double load = 0;
    QString path;
};

QList<Item> items(int count)
{
    QList<Item> items;
    for (int i = 0; i < count; ++i) {
        items.append({QString::number(i), double(i), u"/srv/node%1"_s.arg(i)});
    }
    return items;
}

} // namespace

class TestRecordTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { m_theme.install(); }

    void init();
    void cleanup();

    void sortsByItsHeads();
    void keepsSelectionAndScrollPosition();
    void currentRowGoes();
    void keysMove();
    void typingSeeks();
    void copiesRows();
    void escapeSelectsNothing();
    void holdsTheOrderUnderThePointer();
    void holdsTheOrderWhileAMenuIsOpen();
    void menuOffersActions();
    void buttonsAct();
    void questionComesFirst();
    void buttonPressedOnAnotherRow();
    void selectsFromOutside();
    void widthsStay();
    void oneGroundToTheEdge();
    void marksAndNames();
    void modelGoesFirst();

private:
    void point(int row, int column = 0);
    QPoint middleOf(int row, int column) const;
    QPoint buttonOf(int row) const;

    void load(const QList<Item> &items) { m_model->setRecords(items); }

    Theme m_theme;
    std::unique_ptr<RecordTableModel<Item>> m_model;
    std::unique_ptr<RecordTable> m_table;
    QStringList m_done;
    const QString m_longCommand = u"/usr/bin/java <b>"_s + QString(4000, u'x');
};

void TestRecordTable::init()
{
    m_done.clear();
    RecordTableDeclaration<Item> table;
    table.name = u"Items"_s;
    table.identity = &Item::id;
    table.rowIdentifier = [](const Item &item) { return u"row_"_s + item.id; };
    table.columns = {{.title = u"Load"_s,
                      .text = [](const Item &i) { return QString::number(i.load); },
                      .sortKey = &Item::load,
                      .align = CellAlign::Right},
                     {.title = u"Path"_s, .text = &Item::path, .elide = Qt::ElideMiddle, .stretches = true}};
    const auto run = [this](const QString &name) { return [this, name](const Item &i) { m_done << name + i.id; }; };
    table.actions = {{.label = u"Kill"_s,
                      .icon = IconName::Close,
                      .isDestructive = true,
                      .isButton = true,
                      .isOffered = [](const Item &i) { return i.id != u"1"_s; },
                      .question = [this](const Item &i) -> std::optional<RowQuestion> {
                          return i.id == u"2"_s ? std::optional(RowQuestion{.title = u"Kill?"_s,
                                                                            .text = u"Kill "_s + i.path,
                                                                            .confirm = u"Kill"_s,
                                                                            .detail = m_longCommand})
                                                : std::nullopt;
                      },
                      .run = run(u"kill"_s)},
                     {.label = u"Open"_s, .isDefault = true, .run = run(u"open"_s)}};
    m_model = std::make_unique<RecordTableModel<Item>>(table);
    m_table = std::make_unique<RecordTable>(m_theme, *m_model);
    m_table->resize(700, 400);
    load(items(100));
    m_table->show();
}

void TestRecordTable::cleanup()
{
    m_table.reset();
    m_model.reset();
}

QPoint TestRecordTable::middleOf(int row, int column) const
{
    return m_table->visualRect(m_model->index(row, column)).center();
}

QPoint TestRecordTable::buttonOf(int row) const
{
    const QRect cell = m_table->visualRect(m_model->index(row, 2));
    return {cell.left() + RecordDelegate::kPadding + 8, cell.center().y()};
}

void TestRecordTable::point(int row, int column)
{
    QTest::mouseMove(m_table->viewport(), middleOf(row, column));
}

void TestRecordTable::sortsByItsHeads()
{
    auto *header = m_table->horizontalHeader();
    const auto click = [header](int column) {
        const QPoint middle(header->sectionViewportPosition(column) + header->sectionSize(column) / 2, 10);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, middle);
    };
    click(0);
    QCOMPARE(m_model->sortOrder(), Qt::DescendingOrder);
    QCOMPARE(m_model->identityAt(0), u"99"_s);
    click(1);
    QCOMPARE(m_model->sortColumn(), 1);
    QCOMPARE(m_model->sortOrder(), Qt::AscendingOrder);
    click(2); // the actions
    QCOMPARE(m_model->sortColumn(), 1);
}

void TestRecordTable::keepsSelectionAndScrollPosition()
{
    m_table->selectRow(40);
    m_table->verticalScrollBar()->setValue(1000);
    QList<Item> next = items(100);
    next[40].load = -1;
    next.removeAt(7);
    next.append({u"new"_s, 3.5, u"/new"_s});
    load(next);
    QCOMPARE(m_model->selectedIdentity(), u"40"_s);
    QCOMPARE(m_table->selectionModel()->selectedRows().constFirst().row(), 0);
    QCOMPARE(m_table->currentIndex().row(), 0);
    QCOMPARE(m_table->verticalScrollBar()->value(), 1000);

    m_table->verticalScrollBar()->setValue(m_table->verticalScrollBar()->maximum());
    const int end = m_table->verticalScrollBar()->value();
    QList<Item> others;
    for (int i = 0; i < 100; ++i) {
        others.append({u"other%1"_s.arg(i), double(i), {}});
    }
    load(others); // no row is kept, and yet nothing jumps
    QCOMPARE(m_table->verticalScrollBar()->value(), end);
    QVERIFY(m_model->selectedIdentity().isEmpty());
}

void TestRecordTable::currentRowGoes()
{
    m_table->selectRow(5);
    QList<Item> next = items(100);
    next.removeAt(5);
    load(next);
    QVERIFY(!m_table->selectionModel()->hasSelection()); // another row is not selected in its place
    QVERIFY(m_model->selectedIdentity().isEmpty());
    QCOMPARE(m_table->currentIndex().row(), 5);
    QTest::keyClick(m_table.get(), Qt::Key_Down);
    QCOMPARE(m_model->selectedIdentity(), u"7"_s);
}

void TestRecordTable::keysMove()
{
    m_table->selectRow(3);
    const std::pair<Qt::Key, int> keys[]{
        {Qt::Key_Down, 4}, {Qt::Key_Right, 4}, {Qt::Key_End, 99}, {Qt::Key_Up, 98}, {Qt::Key_Home, 0}};
    for (const auto &[key, row] : keys) {
        QTest::keyClick(m_table.get(), key);
        QCOMPARE(m_model->selectedIdentity(), QString::number(row));
    }
    QTest::keyClick(m_table.get(), Qt::Key_PageDown);
    QVERIFY(m_table->currentIndex().row() > 5);
    QTest::keyClick(m_table.get(), Qt::Key_Return);
    QCOMPARE(m_done, QStringList{u"open"_s + m_model->selectedIdentity()});
}

void TestRecordTable::typingSeeks()
{
    m_table->selectRow(0);
    QTest::keyClicks(m_table.get(), u"/srv/node4"_s);
    QCOMPARE(m_model->selectedIdentity(), u"4"_s);
    QTest::keyClicks(m_table.get(), u"2"_s);
    QCOMPARE(m_model->selectedIdentity(), u"42"_s);
    m_table->keyboardSearch({});
    QTest::keyClicks(m_table.get(), u"node77"_s); // the last part of a path will do
    QCOMPARE(m_model->selectedIdentity(), u"77"_s);
    m_table->keyboardSearch({});
    QTest::keyClicks(m_table.get(), u"zzz"_s);
    QCOMPARE(m_model->selectedIdentity(), u"77"_s);
}

void TestRecordTable::copiesRows()
{
    QGuiApplication::clipboard()->setText(u"before"_s);
    QTest::keySequence(m_table.get(), QKeySequence::Copy);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
    m_table->selectRow(4);
    QTest::keyClick(m_table.get(), Qt::Key_Down, Qt::ShiftModifier);
    QTest::keySequence(m_table.get(), QKeySequence::Copy);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"4\t/srv/node4\n5\t/srv/node5"_s);
}

void TestRecordTable::escapeSelectsNothing()
{
    m_table->selectRow(4);
    QTest::keyClick(m_table.get(), Qt::Key_Escape);
    QVERIFY(!m_table->selectionModel()->hasSelection());
    QVERIFY(m_model->selectedIdentity().isEmpty());
}

void TestRecordTable::holdsTheOrderUnderThePointer()
{
    point(3);
    QVERIFY(m_model->isHeld());
    QList<Item> next = items(100);
    next[3].load = 1000;
    load(next);
    QCOMPARE(m_model->identityAt(3), u"3"_s);
    QVERIFY(m_model->isHoldingBack());
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(m_table->viewport(), &leave);
    QVERIFY(!m_model->isHeld() && !m_model->isHoldingBack());
    QCOMPARE(m_model->identityAt(99), u"3"_s);

    load(items(2));
    QTest::mouseMove(m_table->viewport(), {100, 300}); // below the rows
    QVERIFY(!m_model->isHeld());
}

void TestRecordTable::holdsTheOrderWhileAMenuIsOpen()
{
    m_table->selectRow(2);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QCoreApplication::sendEvent(m_table.get(), &event);
    QPointer menu = m_table->findChild<QMenu *>();
    QVERIFY(menu && m_model->isHeld());
    menu->close();
    QTRY_VERIFY(!menu);
    QVERIFY(!m_model->isHeld());
}

void TestRecordTable::menuOffersActions()
{
    const auto entries = [this] {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QCoreApplication::sendEvent(m_table.get(), &event);
        QMap<QString, QAction *> entries;
        for (QAction *action : m_table->findChildren<QMenu *>(Qt::FindDirectChildrenOnly).last()->actions()) {
            entries.insert(action->text(), action);
        }
        return entries;
    };
    m_table->selectRow(1);
    QVERIFY(!entries().contains(u"Kill"_s));
    m_table->selectRow(3);
    m_model->setError(u"3"_s, u"refused & <b>\nmore"_s);
    const auto shown = entries();
    QVERIFY(shown.contains(u"refused && <b> more"_s) && shown.contains(u"Copy"_s) && shown.contains(u"Sort By"_s));
    shown.value(u"Kill"_s)->trigger();
    QCOMPARE(m_done, QStringList{u"kill3"_s});
    for (QAction *column : shown.value(u"Sort By"_s)->menu()->actions()) {
        if (column->text() == "Path"_L1) {
            column->trigger();
        }
    }
    QCOMPARE(m_model->sortColumn(), 1);

    m_table->selectAll();
    const auto forAll = entries();
    QVERIFY(!forAll.contains(u"Kill"_s) && forAll.contains(u"Copy"_s));
}

void TestRecordTable::buttonsAct()
{
    QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, buttonOf(3));
    QCOMPARE(m_done, QStringList{u"kill3"_s});
    QCOMPARE(m_model->selectedIdentity(), u"3"_s);
    QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, buttonOf(1)); // not offered there
    m_model->setBusy(u"4"_s, true);
    QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, buttonOf(4));
    QTest::mouseDClick(m_table->viewport(), Qt::LeftButton, {}, middleOf(5, 1));
    QCOMPARE(m_done, (QStringList{u"kill3"_s, u"open5"_s}));
}

void TestRecordTable::questionComesFirst()
{
    for (const bool isConfirmed : {false, true}) {
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, buttonOf(2));
        QPointer dialog = m_table->findChild<AlertDialog *>();
        QVERIFY(dialog && m_done.isEmpty() && m_model->isHeld());
        QVERIFY(dialog->buttons().constFirst()->isDefault());
        QCOMPARE(dialog->findChild<QPlainTextEdit *>()->toPlainText(), m_longCommand);
        QVERIFY(dialog->height() < 400); // however long the detail is
        QList<Item> next = items(100);
        next[2].path = u"/other"_s;
        load(next);
        dialog->buttons().at(isConfirmed ? 1 : 0)->click();
        QTRY_VERIFY(!dialog);
        QCOMPARE(m_done, isConfirmed ? QStringList{u"kill2"_s} : QStringList());
    }
}

void TestRecordTable::buttonPressedOnAnotherRow()
{
    QTest::mousePress(m_table->viewport(), Qt::LeftButton, {}, buttonOf(3));
    QTest::mouseRelease(m_table->viewport(), Qt::LeftButton, {}, buttonOf(4));
    QVERIFY(m_done.isEmpty());
    QTest::mousePress(m_table->viewport(), Qt::LeftButton, {}, buttonOf(3));
    m_model->setFilter([](const Item &i) { return i.id != u"0"_s; }); // another row is there now
    QTest::mouseRelease(m_table->viewport(), Qt::LeftButton, {}, buttonOf(3));
    QVERIFY(m_done.isEmpty());
}

void TestRecordTable::selectsFromOutside()
{
    m_model->requestSelection(u"90"_s);
    QCOMPARE(m_table->selectionModel()->selectedRows().constFirst().row(), 90);
    QVERIFY(m_table->viewport()->rect().contains(middleOf(90, 0)));
    // A table that is made later shows what is selected already.
    const RecordTable other(m_theme, *m_model);
    QCOMPARE(other.currentIndex().row(), 90);
}

void TestRecordTable::oneGroundToTheEdge()
{
    QVERIFY(m_table->verticalScrollBar()->isVisible());
    for (const bool isDark : {true, false}) {
        m_theme.setDark(isDark);
        const QImage picture = m_table->grab().toImage();
        QCOMPARE(picture.pixelColor(picture.width() - 1, picture.height() / 2), m_theme.tokens().surface);
    }
}

void TestRecordTable::widthsStay()
{
    const auto total = [this] { return m_table->horizontalHeader()->length(); };
    QCOMPARE(total(), m_table->viewport()->width());
    m_table->horizontalHeader()->resizeSection(0, 200);
    QCOMPARE(total(), m_table->viewport()->width());
    m_table->resize(900, 400);
    QCOMPARE(total(), m_table->viewport()->width());
    QCOMPARE(m_table->columnWidth(0), 200);
    load({});
    load(items(3));
    QCOMPARE(m_table->columnWidth(0), 200);

    QWidget window;
    auto *first = new RecordTable(m_theme, *m_model, &window);
    window.show();
    first->horizontalHeader()->resizeSection(0, 222);
    delete first;
    auto *second = new RecordTable(m_theme, *m_model, &window);
    second->show();
    QCOMPARE(second->columnWidth(0), 222);
}

void TestRecordTable::marksAndNames()
{
    const auto *table = QAccessible::queryAccessibleInterface(m_table.get());
    QCOMPARE(table->text(QAccessible::Name), u"Items"_s);
    const auto *cells = const_cast<QAccessibleInterface *>(table)->tableInterface();
    QCOMPARE(cells->rowCount(), 100);
    QCOMPARE(cells->cellAt(3, 1)->text(QAccessible::Name), u"/srv/node3"_s);
    QCOMPARE(cells->cellAt(3, 2)->text(QAccessible::Name), u"Kill"_s);
    QCOMPARE(m_model->index(3, 0).data(TableModel::RowIdentifierRole).toString(), u"row_3"_s);
}

void TestRecordTable::modelGoesFirst()
{
    m_model->setHeld(true);
    m_model.reset();
    m_table.reset();
}

QTEST_MAIN(TestRecordTable)
#include "test_record_table.moc"
