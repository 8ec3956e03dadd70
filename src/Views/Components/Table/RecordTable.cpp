#include "Views/Components/Table/RecordTable.h"

#include "Views/Components/PlainText.h"
#include "Views/Components/Table/ColumnWidths.h"
#include "Views/Components/Table/RecordDelegate.h"
#include "Views/Components/Table/RowActions.h"
#include "Views/Components/Table/TableHeader.h"
#include "Views/Components/Table/TableModel.h"
#include "Views/Theme/TarnwellStyle.h"
#include "Views/Theme/Theme.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleHints>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kFrameMs = 33;
constexpr double kTurnMs = 900;
constexpr int kLongestToolTip = 4000;
constexpr int kRowsBeforeEnd = 3;

} // namespace

RecordTable::RecordTable(const Theme &theme, TableModel &model, QWidget *parent)
    : QTableView(parent)
    , m_theme(theme)
    , m_model(model)
    , m_delegate(new RecordDelegate(theme, model, this))
    , m_header(new TableHeader(theme, model, m_delegate->actionsWidth(), this))
    , m_actions(new RowActions(theme, model, *this))
{
    // Before the view's own connections to the model: these are to see what was before.
    connect(&model, &TableModel::layoutAboutToBeChanged, this, &RecordTable::beginUpdate);
    connect(&model, &TableModel::rowsAboutToBeRemoved, this, &RecordTable::beginUpdate);
    connect(&model, &TableModel::rowsAboutToBeInserted, this, &RecordTable::beginUpdate);

    setAccessibleName(model.name());
    setFrameShape(QFrame::NoFrame);
    setShowGrid(false);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    setMouseTracking(true);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setItemDelegate(m_delegate);
    verticalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(Metrics::kRowHeight);
    verticalHeader()->setDefaultSectionSize(Metrics::kRowHeight);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    setHorizontalHeader(m_header);
    m_isUpdating = true; // the view begins with nothing selected, which is not the operator's choice
    setModel(&model);
    m_isUpdating = false;
    m_header->start();

    connect(m_actions, &RowActions::openChanged, this, &RecordTable::updateHeld);
    m_frames.setInterval(kFrameMs);
    connect(&m_frames, &QTimer::timeout, this, &RecordTable::turnSpinners);
    connect(&model, &TableModel::updated, this, &RecordTable::endUpdate);
    connect(&model, &TableModel::dataChanged, this, &RecordTable::updateSpinners);
    connect(&model, &TableModel::selectionRequested, this, &RecordTable::select);
    connect(m_header, &TableHeader::widthsChanged, this,
            [this] { ColumnWidths::of(*window()).setWidths(m_model.name(), m_header->widths()); });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        followPointer();
        checkEnd();
    });
    const int selected = model.rowOf(model.selectedIdentity());
    if (selected >= 0) {
        select(selected);
    }
}

RecordTable::~RecordTable()
{
    delete m_actions;          // with an open menu or question, while this is still a table
    if (model() == &m_model) { // not where the model went first
        m_model.setHeld(false);
    }
}

// --- updates -------------------------------------------------------------------------------------------------------

void RecordTable::beginUpdate()
{
    if (!std::exchange(m_isUpdating, true)) {
        m_scrolledTo = verticalScrollBar()->value();
    }
}

void RecordTable::endUpdate()
{
    if (std::exchange(m_isUpdating, false)) {
        // When the current row goes the keyboard stays where it was, not where the view's bookkeeping left it.
        const int row = m_model.rowOf(m_currentIdentity);
        if (row < 0 && m_currentRow >= 0 && m_model.rowCount() > 0) {
            const int next = std::min(m_currentRow, m_model.rowCount() - 1);
            selectionModel()->setCurrentIndex(m_model.index(next, 0), QItemSelectionModel::NoUpdate);
        }
        executeDelayedItemsLayout();
        verticalScrollBar()->setValue(m_scrolledTo);
        followSelection();
        followPointer();
    }
    updateSpinners();
    viewport()->update();
    checkEnd();
}

void RecordTable::followSelection()
{
    if (m_isUpdating) {
        return;
    }
    const int current = currentIndex().row();
    m_currentRow = current;
    m_currentIdentity = current < 0 ? QString() : m_model.identityAt(current);
    const bool isSelected = current >= 0 && selectionModel()->isRowSelected(current);
    const QList<int> rows = isSelected ? QList<int>{current} : selectedRows();
    m_model.setSelectedIdentity(rows.isEmpty() ? QString() : m_model.identityAt(rows.constFirst()));
}

void RecordTable::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTableView::currentChanged(current, previous);
    followSelection();
    viewport()->update(); // the ring is around the whole row
}

void RecordTable::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTableView::selectionChanged(selected, deselected);
    followSelection();
}

void RecordTable::select(int row)
{
    const QModelIndex index = m_model.index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index, EnsureVisible);
}

QList<int> RecordTable::selectedRows() const
{
    QList<int> rows;
    for (const QItemSelectionRange &range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows.append(row);
        }
    }
    std::ranges::sort(rows);
    rows.erase(std::ranges::unique(rows).begin(), rows.end());
    return rows;
}

void RecordTable::checkEnd()
{
    const QScrollBar &bar = *verticalScrollBar();
    if (m_model.rowCount() > 0 && bar.value() >= bar.maximum() - kRowsBeforeEnd * Metrics::kRowHeight) {
        Q_EMIT endReached();
    }
}

// --- the pointer ---------------------------------------------------------------------------------------------------

int RecordTable::actionAt(const QPoint &position) const
{
    const QModelIndex index = indexAt(position);
    return index.column() >= m_model.columns().size() ? m_delegate->actionAt(position, visualRect(index), index.row())
                                                      : -1;
}

void RecordTable::setHovered(const QPoint &position)
{
    m_pointer = position;
    const int row = indexAt(position).row();
    const int action = row < 0 ? -1 : actionAt(position);
    if (row != m_delegate->hoveredRow() || action != m_delegate->hoveredAction()) {
        m_delegate->setHovered(row, action);
        viewport()->update();
        updateHeld();
    }
}

void RecordTable::followPointer()
{
    if (m_delegate->hoveredRow() >= 0) {
        setHovered(m_pointer);
    }
}

void RecordTable::updateHeld()
{
    m_model.setHeld(m_delegate->hoveredRow() >= 0 || m_actions->isOpen());
}

void RecordTable::mouseMoveEvent(QMouseEvent *event)
{
    QTableView::mouseMoveEvent(event);
    setHovered(event->position().toPoint());
}

void RecordTable::mousePressEvent(QMouseEvent *event)
{
    setHovered(event->position().toPoint());
    QTableView::mousePressEvent(event);
    const QPoint position = event->position().toPoint();
    m_pressedAction = event->button() == Qt::LeftButton ? actionAt(position) : -1;
    m_pressedIdentity = m_pressedAction < 0 ? QString() : m_model.identityAt(indexAt(position).row());
}

void RecordTable::mouseReleaseEvent(QMouseEvent *event)
{
    QTableView::mouseReleaseEvent(event);
    const QPoint position = event->position().toPoint();
    const int pressed = std::exchange(m_pressedAction, -1);
    const int row = indexAt(position).row();
    if (pressed >= 0 && row >= 0 && actionAt(position) == pressed && m_model.identityAt(row) == m_pressedIdentity) {
        m_actions->perform(row, pressed);
    }
}

void RecordTable::mouseDoubleClickEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    if (actionAt(position) >= 0) {
        mousePressEvent(event); // two quick clicks on a button are two clicks
        return;
    }
    QTableView::mouseDoubleClickEvent(event);
    const QModelIndex index = indexAt(position);
    if (event->button() == Qt::LeftButton && index.isValid() && index.column() < m_model.columns().size()) {
        m_actions->performDefault(index.row());
    }
}

bool RecordTable::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::Leave) {
        m_delegate->setHovered(-1, -1);
        viewport()->update();
        updateHeld();
    } else if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        QToolTip::showText(help->globalPos(), PlainText::toolTip(toolTipAt(help->pos())), viewport(),
                           visualRect(indexAt(help->pos())));
        return true;
    }
    return QTableView::viewportEvent(event);
}

QString RecordTable::toolTipAt(const QPoint &position) const
{
    const QModelIndex index = indexAt(position);
    if (!index.isValid()) {
        return {};
    }
    const int row = index.row();
    const int action = actionAt(position);
    if (action >= 0) {
        return m_model.actions().at(action).label;
    }
    QString error = m_model.errorAt(row);
    const QRect last = visualRect(index.siblingAtColumn(m_model.columnCount() - 1));
    if (!error.isEmpty() && m_delegate->markRect(last).adjusted(-6, -6, 6, 6).contains(position)) {
        return error;
    }
    if (index.column() >= m_model.columns().size()) {
        return {};
    }
    QString own = m_model.data(index, Qt::ToolTipRole).toString();
    if (!own.isEmpty()) {
        return own;
    }
    const bool isCut = m_delegate->isCut(visualRect(index), row, index.column());
    return isCut ? m_model.cell(row, index.column()).text.left(kLongestToolTip) : QString();
}

// --- the keyboard --------------------------------------------------------------------------------------------------

QModelIndex RecordTable::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    const int rows = m_model.rowCount();
    switch (action) {
    case MoveHome:
        return m_model.index(0, 0);
    case MoveEnd:
        return m_model.index(rows - 1, 0);
    case MoveLeft:
    case MoveRight: {
        QScrollBar &bar = *horizontalScrollBar();
        bar.setValue(bar.value() + (action == MoveLeft ? -1 : 1) * bar.singleStep() * 3);
        return currentIndex();
    }
    default:
        return QTableView::moveCursor(action, modifiers);
    }
}

void RecordTable::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy)) {
        m_actions->copy(selectedRows());
        return;
    }
    const bool isPlain = !(event->modifiers() & ~Qt::KeypadModifier);
    if (isPlain && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentIndex().isValid()) {
        m_actions->performDefault(currentIndex().row());
        return;
    }
    if (isPlain && event->key() == Qt::Key_Escape && selectionModel()->hasSelection()) {
        clearSelection();
        return;
    }
    QTableView::keyPressEvent(event);
}

void RecordTable::keyboardSearch(const QString &search)
{
    // Typed letters collect while they follow quickly; QAbstractItemView's own search does that for one column only.
    if (search.isEmpty() || m_model.rowCount() == 0) {
        m_typed.clear();
        return;
    }
    const bool isNew =
        !m_typing.isValid() || m_typing.elapsed() > QGuiApplication::styleHints()->keyboardInputInterval();
    m_typing.start();
    m_typed = isNew ? search : m_typed + search;
    const bool isRepeated = m_typed.count(m_typed.front()) == m_typed.size();
    const QString wanted = isRepeated ? m_typed.left(1) : m_typed;
    const int rows = m_model.rowCount();
    const int start = std::max(currentIndex().row(), 0) + (isNew || isRepeated ? 1 : 0);
    for (int step = 0; step < rows; ++step) {
        const int row = (start + step) % rows;
        if (m_model.begins(row, wanted)) {
            select(row);
            return;
        }
    }
}

void RecordTable::contextMenuEvent(QContextMenuEvent *event)
{
    QModelIndex index = indexAt(event->pos());
    QPoint position = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        index = currentIndex();
        if (index.isValid()) {
            scrollTo(index);
            position = viewport()->mapToGlobal(visualRect(index).bottomLeft() + QPoint(RecordDelegate::kPadding, 0));
        }
    }
    if (index.isValid() && !selectionModel()->isRowSelected(index.row())) {
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    m_actions->popUp(selectedRows(), position);
}

// --- painting ------------------------------------------------------------------------------------------------------

void RecordTable::updateSpinners()
{
    const bool isTurning = isVisible() && m_model.hasBusyRows();
    if (isTurning != m_frames.isActive()) {
        isTurning ? m_frames.start() : m_frames.stop();
    }
}

void RecordTable::turnSpinners()
{
    m_turn += 360.0 * kFrameMs / kTurnMs;
    m_delegate->setTurn(m_turn);
    const int last = m_model.columnCount() - 1;
    for (int row = std::max(rowAt(0), 0); row < m_model.rowCount(); ++row) {
        const QRect cell = visualRect(m_model.index(row, last));
        if (cell.top() > viewport()->height()) {
            break;
        }
        if (m_model.isBusy(row)) {
            viewport()->update(cell);
        }
    }
}

void RecordTable::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    if (hasFocus() && currentIndex().isValid()) {
        QPainter painter(viewport());
        const QRect cell = visualRect(currentIndex());
        TarnwellStyle::drawFocusRing(painter, QRectF(0, cell.top(), viewport()->width(), cell.height()), 4,
                                     m_theme.tokens().accent.color);
    }
}

void RecordTable::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    m_header->fill(viewport()->width());
}

void RecordTable::showEvent(QShowEvent *event)
{
    QTableView::showEvent(event);
    m_header->setWidths(ColumnWidths::of(*window()).widths(m_model.name()));
    updateSpinners();
}

void RecordTable::hideEvent(QHideEvent *event)
{
    QTableView::hideEvent(event);
    m_frames.stop();
    m_delegate->setHovered(-1, -1);
    updateHeld();
}
