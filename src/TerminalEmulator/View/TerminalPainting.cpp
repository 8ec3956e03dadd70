#include "TerminalEmulator/View/TerminalWidgetState.h"

#include <QGuiApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QStyleHints>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <utility>

namespace vt
{

namespace
{

QRgb toRgb(Rgb color)
{
    return qRgb(color.red, color.green, color.blue);
}

/// Makes a painter of a widget draw in the device's pixels, (0, 0) at the widget's corner: cells meet without a gap
/// at fractional ratios too.
void useDevicePixels(QPainter &painter)
{
    const QTransform device = painter.deviceTransform();
    const QPoint corner = device.map(QPointF(0, 0)).toPoint();
    painter.setWorldTransform(QTransform::fromTranslate(corner.x(), corner.y()) * device.inverted());
}

/// What of a range lies on a line.
void addMark(std::vector<RowMark> &marks, int64_t line, int columns, Position first, Position last, bool block,
             RowMark::Kind kind)
{
    if (line < first.line || line > last.line) {
        return;
    }
    const int from = block || line == first.line ? first.column : 0;
    const int to = block || line == last.line ? last.column : columns - 1;
    if (from <= to) {
        marks.push_back({from, to, kind});
    }
}

} // namespace

// ---- frames ------------------------------------------------------------------------------------------------------

/// Nobody reads a flood: its frames leave most of the time to taking it in.
int TerminalWidget::State::frameInterval() const
{
    if (!isFlooded && !feeder.isFlooded()) {
        return FrameInterval;
    }
    return static_cast<int>(std::clamp<qint64>(frameCost * FrameShare / 1'000'000, FrameInterval, SlowestFrame));
}

void TerminalWidget::State::requestFrame()
{
    if (!widget->isVisible()) {
        return;
    }
    const int interval = frameInterval();
    const qint64 passed = sinceFrame.isValid() ? sinceFrame.elapsed() : interval;
    const int due = static_cast<int>(std::max<qint64>(0, interval - passed));
    // A timer that waits for the application to show its output gives way once it did.
    if (!frameTimer.isActive() || (heldBack.isValid() && !terminal.isSynchronizing())) {
        frameTimer.start(due);
    }
}

void TerminalWidget::State::frame()
{
    frameTimer.stop();
    if (!widget->isVisible()) {
        return;
    }
    if (!terminal.isSynchronizing()) {
        heldBack.invalidate();
    } else if (!heldBack.isValid() || heldBack.elapsed() < SyncTimeout) {
        if (!heldBack.isValid()) {
            heldBack.start();
        }
        frameTimer.start(static_cast<int>(std::max<qint64>(1, SyncTimeout - heldBack.elapsed())));
        return;
    }
    // More than anybody reads: several screens of it came since the last frame.
    isFlooded = taken > FloodScreens * terminal.columns() * terminal.rows();
    taken = 0;
    draw(QDeadlineTimer(SliceTime, Qt::PreciseTimer));
}

/// Draws what changed. What is not drawn after `until` is drawn by the next frame, which comes as soon as everything
/// else had its turn.
void TerminalWidget::State::draw(QDeadlineTimer until)
{
    sinceFrame.start();
    const int64_t shown = screen.top();
    const Damage damage = terminal.takeDamage();
    shownHits.clear();
    if (finder.isActive()) {
        shownHits = terminal.hits(topLine(), topLine() + terminal.rows() - 1);
    }
    unseen += screen.update(
        terminal, *cells, *painter, topLine(), damage, [this](int64_t line) { return marks(line); }, until);
    if (!screen.isComplete()) {
        frameTimer.start(isFlooded ? frameInterval() : 0);
    }
    // What is drawn in slices is shown as one, unless that takes too long.
    if (screen.isComplete() || isFlooded || (sinceWhole.isValid() && sinceWhole.elapsed() > LongestSlices)) {
        sinceWhole.invalidate();
        widget->update(toWidget(std::exchange(unseen, {}).translated(gridRect().topLeft())));
    } else if (!sinceWhole.isValid()) {
        sinceWhole.start();
    }
    // The margins are of the screen's colour, which the application may set.
    if (const QRgb now = painter->defaultBackground(); std::exchange(ground, now) != now) {
        widget->update();
    }
    touchCursor();
    updateBlinking();
    placeScrollBar();
    announcer.note();
    if (shown != screen.top()) {
        Q_EMIT widget->scrollChanged();
    }
    frameCost = sinceFrame.nsecsElapsed();
}

void TerminalWidget::State::invalidate()
{
    screen.invalidate();
    widget->update();
    requestFrame();
}

std::vector<RowMark> TerminalWidget::State::marks(int64_t line) const
{
    std::vector<RowMark> result;
    const int columns = terminal.columns();
    for (const SearchHit &hit : shownHits) {
        const bool current = finder.current() && *finder.current() == hit;
        addMark(result, line, columns, hit.first, hit.last, false,
                current ? RowMark::Kind::CurrentHit : RowMark::Kind::Hit);
    }
    if (const std::optional<Selection> selected = terminal.selection()) {
        addMark(result, line, columns, selected->first, selected->last, selected->kind == SelectionKind::Block,
                RowMark::Kind::Selected);
    }
    if (hovered) {
        addMark(result, line, columns, hovered->first, hovered->last, false, RowMark::Kind::Link);
    }
    return result;
}

// ---- place -------------------------------------------------------------------------------------------------------

int64_t TerminalWidget::State::topLine() const
{
    return follows || terminal.isAlternateScreen() ? terminal.screenTop()
                                                   : std::clamp(top, terminal.firstLine(), terminal.screenTop());
}

void TerminalWidget::State::scrollTo(int64_t line)
{
    top = std::clamp(line, terminal.firstLine(), terminal.screenTop());
    follows = top == terminal.screenTop();
    placeScrollBar();
    scrollBar->reveal();
    requestFrame();
}

void TerminalWidget::State::placeScrollBar()
{
    const QRect room = widget->rect();
    scrollBar->setGeometry(room.right() + 1 - OverlayScrollBar::Width, 0, OverlayScrollBar::Width, room.height());
    scrollBar->setPlace(static_cast<int>(topLine() - terminal.firstLine()), terminal.historySize(), terminal.rows());
}

/// Scrolls a hit into sight, with some of what is around it.
void TerminalWidget::State::reveal(const SearchHit &hit)
{
    const int64_t first = topLine();
    if (hit.first.line < first || hit.first.line >= first + terminal.rows()) {
        scrollTo(hit.first.line - terminal.rows() / 2);
    }
    requestFrame();
}

// ---- cursor ------------------------------------------------------------------------------------------------------

QRect TerminalWidget::State::cursorRect() const
{
    const CursorState cursor = terminal.cursor();
    const int64_t row = terminal.screenTop() + cursor.row - topLine();
    if (row < 0 || row >= terminal.rows()) {
        return {};
    }
    Line line;
    terminal.line(terminal.screenTop() + cursor.row, line);
    const auto column = static_cast<size_t>(cursor.column);
    const bool wide = column < line.cells.size() && line.cells[column].isWide();
    const int factor = line.size == LineSize::Normal ? 1 : 2;
    return cellRect(static_cast<int>(row), cursor.column * factor, (wide ? 2 : 1) * factor).intersected(gridRect());
}

/// Has the places drawn anew where the cursor was and where it is.
void TerminalWidget::State::touchCursor()
{
    QRect now = terminal.cursor().visible || !preedit.isEmpty() ? cursorRect() : QRect();
    if (!preedit.isEmpty()) {
        now = now.isEmpty()
                  ? now
                  : gridRect().intersected(QRect(gridRect().x(), now.y(), gridRect().width(), now.height()));
    }
    if (now != drawnCursor) {
        widget->update(toWidget(QRegion(drawnCursor) + now));
        drawnCursor = now;
        widget->updateMicroFocus();
    }
}

void TerminalWidget::State::updateBlinking()
{
    const CursorState cursor = terminal.cursor();
    const bool wanted = (widget->hasFocus() && cursor.visible && cursor.blinking) || screen.hasBlinking();
    const int period = QGuiApplication::styleHints()->cursorFlashTime();
    const bool runs = wanted && period > 0 && widget->isVisible();
    if (runs && !blinkTimer.isActive()) {
        blinkTimer.start(std::max(period / 2, 100), widget);
    } else if (!runs && blinkTimer.isActive()) {
        blinkTimer.stop();
        showCursor();
    }
}

void TerminalWidget::State::showCursor()
{
    if (blinkTimer.isActive()) {
        blinkTimer.start(std::max(QGuiApplication::styleHints()->cursorFlashTime() / 2, 100), widget);
    }
    if (!blinkPhase) {
        blinkPhase = true;
        painter->hideBlinking(false, false);
        widget->update(toWidget(drawnCursor));
        if (screen.touchBlinking()) {
            requestFrame();
        }
    }
}

void TerminalWidget::timerEvent(QTimerEvent *event)
{
    State &state = *m_state;
    if (event->timerId() != state.blinkTimer.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    state.blinkPhase = !state.blinkPhase;
    update(state.toWidget(state.drawnCursor));
    state.painter->hideBlinking(!state.blinkPhase, !state.blinkPhase);
    if (state.screen.touchBlinking()) {
        state.requestFrame();
    }
}

// ---- painting ----------------------------------------------------------------------------------------------------

void TerminalWidget::paintEvent(QPaintEvent *event)
{
    State &state = *m_state;
    if (state.screen.image().isNull()) {
        state.frame();
    }
    QElapsedTimer clock;
    clock.start();
    QPainter painter(this);
    useDevicePixels(painter);
    state.paint(painter, event->region());
    state.frameCost += clock.nsecsElapsed();
}

void TerminalWidget::State::paint(QPainter &canvas, const QRegion &region)
{
    const qreal ratio = widget->devicePixelRatioF();
    const QRect grid = gridRect();
    const QRect drawn(grid.topLeft(), screen.image().size());
    const QColor blank(painter->defaultBackground());
    for (const QRect &each : region) {
        const QRect device =
            QRectF(each.x() * ratio, each.y() * ratio, each.width() * ratio, each.height() * ratio).toAlignedRect();
        for (const QRect &margin : QRegion(device) - drawn) {
            canvas.fillRect(margin, blank);
        }
        const QRect inside = device & drawn;
        if (!inside.isEmpty()) {
            canvas.drawImage(inside.topLeft(), screen.image(), inside.translated(-drawn.topLeft()));
        }
    }
    paintCursor(canvas);
    if (!preedit.isEmpty()) {
        paintPreedit(canvas);
    }
    if (bellTimer.isActive()) {
        QColor flash(painter->defaultText());
        flash.setAlpha(40);
        canvas.fillRect(QRectF(0, 0, widget->width() * ratio, widget->height() * ratio), flash);
    }
}

void TerminalWidget::State::paintCursor(QPainter &canvas)
{
    const CursorState cursor = terminal.cursor();
    const QRect place = cursorRect();
    const bool focused = widget->hasFocus();
    if (!cursor.visible || place.isEmpty() || !preedit.isEmpty() || (focused && cursor.blinking && !blinkPhase)) {
        return;
    }
    Line line;
    terminal.line(terminal.screenTop() + cursor.row, line);
    const auto column = static_cast<size_t>(cursor.column);
    const Style &style = terminal.style(column < line.cells.size() ? line.cells[column].style : 0);
    const RowPainter::Ink ink = painter->ink(style);
    // A cursor of its surroundings' colour would not be seen.
    QRgb color = toRgb(terminal.cursorColor());
    color = std::abs(qGray(color) - qGray(ink.background)) < 32 ? ink.text : color;
    const int thick = cells->lineWidth();
    const QRect row(gridRect().x(), place.y(), gridRect().width(), cells->height());
    if (!focused) {
        const QRegion hollow = QRegion(place) - place.adjusted(thick, thick, -thick, -thick);
        for (const QRect &each : hollow) {
            canvas.fillRect(each, QColor(color));
        }
    } else if (cursor.shape == CursorShape::Block) {
        painter->drawCursorCell(canvas, line, row, cursor.column, color, ink.background);
    } else if (cursor.shape == CursorShape::Bar) {
        canvas.fillRect(QRect(place.x(), place.y(), std::max(2 * thick, 2), place.height()), QColor(color));
    } else {
        const int height = std::max(2 * thick, 2);
        canvas.fillRect(QRect(place.x(), place.bottom() + 1 - height, place.width(), height), QColor(color));
    }
}

/// What is being composed stands where it will go, underlined.
void TerminalWidget::State::paintPreedit(QPainter &canvas)
{
    const QRect place = cursorRect();
    if (place.isEmpty()) {
        return;
    }
    const QRect grid = gridRect();
    const int baseline = place.y() + cells->baseline();
    int x = place.x();
    int caret = x;
    qsizetype from = 0;
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, preedit);
    while (from < preedit.size()) {
        const qsizetype to = clusters.toNextBoundary();
        if (to < 0) {
            break;
        }
        const QString cluster = preedit.mid(from, to - from);
        const char32_t first = cluster.toUcs4().constFirst();
        const bool wide = first >= 0x1100 && cells->glyph(first, CellFont::Regular) == 0;
        const int width = cells->width() * (wide ? 2 : 1);
        const QRect cell(x, place.y(), width, cells->height());
        if (!grid.contains(cell)) {
            break;
        }
        canvas.fillRect(cell, QColor(painter->defaultBackground()));
        canvas.fillRect(QRect(x, place.y() + cells->underlineTop(), width, cells->lineWidth()),
                        QColor(painter->defaultText()));
        const CellFont::Layout &layout = cells->layout(cluster, CellFont::Regular, wide ? 2 : 1);
        canvas.setPen(QColor(painter->defaultText()));
        for (const QGlyphRun &run : layout.runs) {
            canvas.drawGlyphRun(QPointF(x, baseline) + layout.offset, run);
        }
        x += width;
        from = to;
        caret = from <= preeditCursor ? x : caret;
    }
    canvas.fillRect(QRect(caret, place.y(), std::max(2, cells->lineWidth()), place.height()),
                    QColor(painter->defaultText()));
}

// ---- what happens to the window ----------------------------------------------------------------------------------

void TerminalWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_state->resizeTimer.start();
}

void TerminalWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_state->invalidate();
}

void TerminalWidget::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_state->hover({}, false);
    m_state->frameTimer.stop();
    m_state->blinkTimer.stop();
}

void TerminalWidget::focusInEvent(QFocusEvent *event)
{
    QWidget::focusInEvent(event);
    m_state->showCursor();
    m_state->updateBlinking();
    update(m_state->toWidget(m_state->drawnCursor));
    m_state->send(m_state->terminal.encodeFocus(true));
}

void TerminalWidget::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    m_state->updateBlinking();
    update(m_state->toWidget(m_state->drawnCursor));
    m_state->send(m_state->terminal.encodeFocus(false));
}

void TerminalWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        m_state->applyColors();
    } else if (event->type() == QEvent::ContentsRectChange) {
        m_state->resizeTimer.start();
    }
}

} // namespace vt
