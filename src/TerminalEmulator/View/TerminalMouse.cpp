#include "TerminalEmulator/View/KeyTranslation.h"
#include "TerminalEmulator/View/SafeLink.h"
#include "TerminalEmulator/View/TerminalWidgetState.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QStyleHints>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vt
{

namespace
{

MouseButton buttonOf(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton:
        return MouseButton::Left;
    case Qt::MiddleButton:
        return MouseButton::Middle;
    case Qt::RightButton:
        return MouseButton::Right;
    case Qt::BackButton:
        return MouseButton::Back;
    case Qt::ForwardButton:
        return MouseButton::Forward;
    default:
        return MouseButton::None;
    }
}

} // namespace

// ---- places ------------------------------------------------------------------------------------------------------

Position TerminalWidget::State::positionAt(QPointF point) const
{
    const QPointF place = point * widget->devicePixelRatioF() - gridRect().topLeft();
    const int column =
        std::clamp(static_cast<int>(std::floor(place.x() / cells->width())), 0, terminal.columns() - 1);
    const int row = std::clamp(static_cast<int>(std::floor(place.y() / cells->height())), 0, terminal.rows() - 1);
    return {topLine() + row, column};
}

Position TerminalWidget::State::boundaryAt(QPointF point) const
{
    const QPointF place = point * widget->devicePixelRatioF() - gridRect().topLeft();
    Position result = positionAt(point);
    result.column = std::clamp(qRound(place.x() / cells->width()), 0, terminal.columns());
    return result;
}

// ---- reports -----------------------------------------------------------------------------------------------------

/// Shift takes the mouse from the application, and so does what is above its screen.
bool TerminalWidget::State::isReported(Qt::KeyboardModifiers modifiers) const
{
    return terminal.wantsMouse() && !modifiers.testFlag(Qt::ShiftModifier) && topLine() == terminal.screenTop();
}

bool TerminalWidget::State::report(MouseEvent::Action action, MouseButton button, QPointF point,
                                   Qt::KeyboardModifiers modifiers)
{
    const Position at = positionAt(point);
    const QPointF pixel = point * widget->devicePixelRatioF() - gridRect().topLeft();
    MouseEvent event;
    event.action = action;
    event.button = button;
    event.column = at.column;
    event.row = static_cast<int>(at.line - topLine());
    event.pixelX = std::clamp(static_cast<int>(pixel.x()), 0, terminal.columns() * cells->width() - 1);
    event.pixelY = std::clamp(static_cast<int>(pixel.y()), 0, terminal.rows() * cells->height() - 1);
    event.modifiers = toModifiers(modifiers);
    const std::string bytes = terminal.encodeMouse(event);
    // A motion inside a cell is told once.
    if (action != MouseEvent::Action::Motion || bytes != lastReport) {
        send(bytes);
    }
    lastReport = bytes;
    return !bytes.empty();
}

void TerminalWidget::mousePressEvent(QMouseEvent *event)
{
    m_state->pressed(*event);
}

void TerminalWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_state->pressed(*event);
}

void TerminalWidget::State::pressed(const QMouseEvent &event)
{
    const QPointF point = event.position();
    const MouseButton button = buttonOf(event.button());
    if (isReported(event.modifiers())) {
        if (button != MouseButton::None) {
            reportedButton = button;
            report(MouseEvent::Action::Press, button, point, event.modifiers());
        }
        return;
    }
    if (button == MouseButton::Middle && QGuiApplication::clipboard()->supportsSelection()) {
        widget->pasteText(QGuiApplication::clipboard()->text(QClipboard::Selection));
    } else if (button == MouseButton::Left) {
        const QStyleHints *hints = QGuiApplication::styleHints();
        const bool again = sinceClick.isValid() && sinceClick.elapsed() < hints->mouseDoubleClickInterval() &&
                           (point - lastClick).manhattanLength() < hints->mouseDoubleClickDistance();
        clicks = again ? clicks % 3 + 1 : 1;
        sinceClick.start();
        lastClick = point;
        hover(point, event.modifiers().testFlag(Qt::ControlModifier));
        if (!hovered) {
            select(point, event.modifiers());
        }
    }
}

void TerminalWidget::mouseMoveEvent(QMouseEvent *event)
{
    State &state = *m_state;
    state.pointer = event->position();
    if (state.reportedButton != MouseButton::None) {
        state.report(MouseEvent::Action::Motion, state.reportedButton, event->position(), event->modifiers());
    } else if (state.isSelecting) {
        const bool outside =
            event->position().y() < contentsRect().top() || event->position().y() > contentsRect().bottom();
        if (outside && !state.selectTimer.isActive()) {
            state.selectTimer.start();
        } else if (!outside) {
            state.selectTimer.stop();
        }
        state.extendSelection(event->position());
    } else {
        if (state.isReported(event->modifiers()) && state.terminal.wantsMouseMotion()) {
            state.report(MouseEvent::Action::Motion, MouseButton::None, event->position(), event->modifiers());
        }
        state.hover(event->position(), event->modifiers().testFlag(Qt::ControlModifier));
        if (event->position().x() > width() - 2 * OverlayScrollBar::Width) {
            state.scrollBar->reveal();
        }
    }
}

void TerminalWidget::mouseReleaseEvent(QMouseEvent *event)
{
    State &state = *m_state;
    const MouseButton button = buttonOf(event->button());
    if (state.reportedButton == button && button != MouseButton::None) {
        state.reportedButton = MouseButton::None;
        state.report(MouseEvent::Action::Release, button, event->position(), event->modifiers());
        return;
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (state.isSelecting) {
        state.endSelection();
    } else if (state.hovered && event->modifiers().testFlag(Qt::ControlModifier)) {
        const std::optional<Terminal::FoundLink> under = state.terminal.linkAt(state.positionAt(event->position()));
        if (under && under->uri == state.hovered->uri) {
            const std::optional<QUrl> url = safeLink(under->uri);
            if (url) {
                Q_EMIT linkActivated(*url);
            }
        }
    }
}

void TerminalWidget::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    m_state->hover({}, false);
}

void TerminalWidget::wheelEvent(QWheelEvent *event)
{
    constexpr int RowsPerStep = 3;
    constexpr int StepAngle = 120;
    State &state = *m_state;
    event->accept();
    QPoint &rest = state.wheelRest;
    const bool exact = !event->pixelDelta().isNull();
    rest += exact ? event->pixelDelta() : event->angleDelta();
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        const int steps = rest.y() / StepAngle;
        rest.ry() -= steps * StepAngle;
        if (steps != 0) {
            zoom(steps);
        }
        return;
    }
    const bool reported = state.isReported(event->modifiers());
    const int cell = std::max(1, qRound(state.cells->height() / devicePixelRatioF()));
    const int unit = exact ? cell : reported ? StepAngle : StepAngle / RowsPerStep;
    const int rows = rest.y() / unit;
    const int columns = rest.x() / unit;
    rest -= QPoint(columns * unit, rows * unit);
    if (!reported && !state.terminal.isAlternateScreen()) {
        if (rows != 0) {
            scrollBy(-rows);
        }
        return;
    }
    for (int each = 0; each < std::abs(rows); ++each) {
        state.report(MouseEvent::Action::Press, rows > 0 ? MouseButton::WheelUp : MouseButton::WheelDown,
                     event->position(), event->modifiers());
    }
    for (int each = 0; reported && each < std::abs(columns); ++each) {
        state.report(MouseEvent::Action::Press, columns > 0 ? MouseButton::WheelLeft : MouseButton::WheelRight,
                     event->position(), event->modifiers());
    }
}

// ---- selection ---------------------------------------------------------------------------------------------------

void TerminalWidget::State::select(QPointF point, Qt::KeyboardModifiers modifiers)
{
    const std::optional<Selection> before = terminal.selection();
    isSelecting = true;
    if (modifiers.testFlag(Qt::ShiftModifier) && before && clicks == 1) {
        // The end that is nearer goes along.
        const Position at = boundaryAt(point);
        selectionKind = before->kind;
        const Position end{before->last.line, before->last.column + 1};
        anchor = at < before->first ? end : before->first;
        if (selectionKind != SelectionKind::Character) {
            anchor = at < before->first ? before->last : before->first;
        }
        extendSelection(point);
        return;
    }
    selectionKind = modifiers.testFlag(Qt::AltModifier) ? SelectionKind::Block
                    : clicks == 2                       ? SelectionKind::Word
                    : clicks == 3                       ? SelectionKind::Line
                                                        : SelectionKind::Character;
    anchor = selectionKind == SelectionKind::Character ? boundaryAt(point) : positionAt(point);
    if (selectionKind == SelectionKind::Character) {
        terminal.clearSelection();
    } else {
        terminal.startSelection(anchor, selectionKind);
    }
    requestFrame();
    Q_EMIT widget->selectionChanged();
}

void TerminalWidget::State::extendSelection(QPointF point)
{
    if (selectionKind != SelectionKind::Character) {
        terminal.startSelection(anchor, selectionKind);
        terminal.extendSelection(positionAt(point));
    } else {
        // From gap to gap: a cell is in as soon as the pointer has passed its middle.
        const Position head = boundaryAt(point);
        const Position first = std::min(anchor, head);
        Position last = std::max(anchor, head);
        last =
            last.column > 0 ? Position{last.line, last.column - 1} : Position{last.line - 1, terminal.columns() - 1};
        if (last < first) {
            terminal.clearSelection();
        } else {
            terminal.startSelection(first, SelectionKind::Character);
            terminal.extendSelection(last);
        }
    }
    requestFrame();
    Q_EMIT widget->selectionChanged();
}

void TerminalWidget::State::scrollWhileSelecting()
{
    const QRect room = widget->contentsRect();
    const qreal beyond = pointer.y() < room.top() ? pointer.y() - room.top() : pointer.y() - room.bottom();
    const int rows = static_cast<int>(beyond / 12);
    scrollTo(topLine() + std::clamp(rows == 0 ? (beyond < 0 ? -1 : 1) : rows, -10, 10));
    extendSelection(pointer);
}

void TerminalWidget::State::endSelection()
{
    isSelecting = false;
    selectTimer.stop();
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection() && terminal.selection()) {
        clipboard->setText(widget->selectedText(), QClipboard::Selection);
    }
}

// ---- links and menu ----------------------------------------------------------------------------------------------

/// Shows a link under the pointer as one, and where it leads, as long as it is wanted.
void TerminalWidget::State::hover(QPointF point, bool wanted)
{
    std::optional<Terminal::FoundLink> found;
    if (wanted && gridRect().contains((point * widget->devicePixelRatioF()).toPoint()) && !isReported({})) {
        found = terminal.linkAt(positionAt(point));
        if (found && !safeLink(found->uri)) {
            found.reset();
        }
    }
    const bool same = found.has_value() == hovered.has_value() &&
                      (!found || (found->first == hovered->first && found->uri == hovered->uri));
    if (same) {
        return;
    }
    hovered = found;
    widget->setCursor(found ? Qt::PointingHandCursor : Qt::IBeamCursor);
    linkLabel->setVisible(found.has_value());
    if (found) {
        const QString uri = safeLink(found->uri)->toString(QUrl::FullyEncoded);
        const int room = widget->width() * 2 / 3;
        linkLabel->setText(linkLabel->fontMetrics().elidedText(uri, Qt::ElideMiddle, room));
        linkLabel->adjustSize();
        // Where the pointer is not.
        const bool above = point.y() > widget->height() / 2.0;
        linkLabel->move(0, above ? 0 : widget->height() - linkLabel->height());
        linkLabel->raise();
    }
    requestFrame();
}

void TerminalWidget::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Mouse && m_state->isReported(event->modifiers())) {
        return;
    }
    const bool keyboard = event->reason() == QContextMenuEvent::Keyboard;
    const QPoint place =
        keyboard ? m_state->toWidget(m_state->cursorRect()).boundingRect().bottomLeft() : event->pos();
    m_state->showMenu(mapToGlobal(place), place);
}

void TerminalWidget::State::showMenu(QPoint global, QPointF point)
{
    auto *menu = new QMenu(widget);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](const QString &text, auto &&run, bool enabled = true) {
        QAction *action = menu->addAction(text);
        action->setEnabled(enabled);
        QObject::connect(action, &QAction::triggered, widget, run);
    };
    const std::optional<Terminal::FoundLink> link = terminal.linkAt(positionAt(point));
    const std::optional<QUrl> url = link ? safeLink(link->uri) : std::nullopt;
    if (url) {
        add(TerminalWidget::tr("Copy Link"),
            [target = *url] { QGuiApplication::clipboard()->setText(target.toString(QUrl::FullyEncoded)); });
        menu->addSeparator();
    }
    add(
        TerminalWidget::tr("Copy") + QStringLiteral("\tCtrl+Shift+C"), [this] { widget->copy(); },
        widget->hasSelection());
    add(
        TerminalWidget::tr("Paste") + QStringLiteral("\tCtrl+Shift+V"), [this] { widget->paste(); },
        !QGuiApplication::clipboard()->text().isEmpty());
    add(TerminalWidget::tr("Select All"), [this] { widget->selectAll(); });
    menu->addSeparator();
    add(TerminalWidget::tr("Find\u2026") + QStringLiteral("\tCtrl+Shift+F"),
        [this] { Q_EMIT widget->findRequested(); });
    add(TerminalWidget::tr("Clear"), [this] { widget->clear(); });
    menu->popup(global);
}

} // namespace vt
