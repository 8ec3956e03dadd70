#include "TerminalEmulator/View/TerminalAccessible.h"

#include "TerminalEmulator/View/TerminalWidget.h"

#include <algorithm>
#include <utility>

namespace vt
{

namespace
{

constexpr int Pause = 150; ///< milliseconds between two announcements

/// The text of a row, and where each of its columns begins in it.
QString rowText(const Terminal &terminal, const Line &line, std::vector<qsizetype> *offsets = nullptr)
{
    QString result;
    std::string utf8;
    for (const Cell &cell : line.cells) {
        if (offsets) {
            offsets->push_back(cell.isTail() ? offsets->back() : result.size());
        }
        utf8.clear();
        terminal.appendText(cell, utf8);
        result += QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    }
    return result;
}

void trimEnd(QString &text)
{
    qsizetype size = text.size();
    while (size > 0 && text.at(size - 1) == QLatin1Char(' ')) {
        --size;
    }
    text.truncate(size);
}

/// A style in the words of IAccessible2's text attributes.
QString describe(const Terminal &terminal, const Style &style)
{
    Rgb text = terminal.resolve(style.foreground, terminal.foreground());
    Rgb background = terminal.resolve(style.background, terminal.background());
    if (style.has(Style::Inverse) != terminal.isReverseScreen()) {
        std::swap(text, background);
    }
    const auto color = [](Rgb each) {
        return QStringLiteral("rgb(%1,%2,%3)").arg(each.red).arg(each.green).arg(each.blue);
    };
    QString result = QStringLiteral("color:%1;background-color:%2;").arg(color(text), color(background));
    if (style.has(Style::Bold)) {
        result += QLatin1String("font-weight:bold;");
    }
    if (style.has(Style::Italic)) {
        result += QLatin1String("font-style:italic;");
    }
    if (style.underline != Underline::None) {
        result += QLatin1String("text-underline-style:solid;");
    }
    if (style.has(Style::Strike)) {
        result += QLatin1String("text-line-through-style:solid;");
    }
    if (style.has(Style::Invisible)) {
        result += QLatin1String("invisible:true;");
    }
    return result;
}

} // namespace

ScreenText ScreenText::of(const Terminal &terminal, int64_t top)
{
    ScreenText result;
    Line line;
    const CursorState cursor = terminal.cursor();
    result.cursor = -1;
    for (int row = 0; row < terminal.rows(); ++row) {
        if (row > 0) {
            result.text += QLatin1Char('\n');
        }
        result.starts.append(result.text.size());
        if (!terminal.line(top + row, line)) {
            continue;
        }
        std::vector<qsizetype> offsets;
        QString text = rowText(terminal, line, &offsets);
        const qsizetype whole = text.size();
        trimEnd(text);
        if (top + row == terminal.screenTop() + cursor.row) {
            const auto column = static_cast<size_t>(cursor.column);
            const qsizetype at = column < offsets.size()
                                     ? offsets[column]
                                     : whole + cursor.column - static_cast<qsizetype>(offsets.size());
            text = text.leftJustified(at);
            result.cursor = result.starts.constLast() + at;
        }
        result.text += text;
    }
    result.cursor = result.cursor < 0 ? result.text.size() : result.cursor;
    return result;
}

qsizetype ScreenText::rowAt(qsizetype offset) const
{
    return std::upper_bound(starts.begin(), starts.end(), offset) - starts.begin() - 1;
}

QList<TextChange> TextChange::between(const QString &before, const QString &after)
{
    if (before == after) {
        return {};
    }
    const auto [left, right] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const qsizetype prefix = left - before.begin();
    qsizetype suffix = 0;
    const qsizetype room = std::min(before.size(), after.size()) - prefix;
    while (suffix < room && before.at(before.size() - 1 - suffix) == after.at(after.size() - 1 - suffix)) {
        ++suffix;
    }
    const QString removed = before.mid(prefix, before.size() - prefix - suffix);
    // Did the text move up instead? Then its lines are found again some lines higher.
    for (qsizetype cut = before.indexOf(QLatin1Char('\n')) + 1; cut > 0 && removed.size() > 1;
         cut = before.indexOf(QLatin1Char('\n'), cut) + 1) {
        const QStringView rest = QStringView(before).sliced(cut);
        if (!rest.trimmed().isEmpty() && QStringView(after).startsWith(rest)) {
            return {{0, before.left(cut), QString()}, {rest.size(), QString(), after.mid(rest.size())}};
        }
    }
    return {{prefix, removed, after.mid(prefix, after.size() - prefix - suffix)}};
}

// ---- interface ---------------------------------------------------------------------------------------------------

TerminalAccessible::TerminalAccessible(TerminalWidget *widget)
    : QAccessibleWidget(widget, QAccessible::Terminal)
{
}

void TerminalAccessible::install()
{
    static const bool once = [] {
        QAccessible::installFactory([](const QString &, QObject *object) -> QAccessibleInterface * {
            auto *const widget = qobject_cast<TerminalWidget *>(object);
            return widget ? new TerminalAccessible(widget) : nullptr;
        });
        return true;
    }();
    Q_UNUSED(once)
}

TerminalWidget &TerminalAccessible::view() const
{
    return *static_cast<TerminalWidget *>(widget());
}

int64_t TerminalAccessible::top() const
{
    return view().terminal().screenTop() - view().scrollPosition();
}

ScreenText TerminalAccessible::screen() const
{
    return ScreenText::of(view().terminal(), top());
}

void *TerminalAccessible::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface *>(this)
                                              : QAccessibleWidget::interface_cast(type);
}

QAccessible::State TerminalAccessible::state() const
{
    QAccessible::State result = QAccessibleWidget::state();
    result.multiLine = true;
    result.selectableText = true;
    result.readOnly = false;
    return result;
}

int TerminalAccessible::selectionCount() const
{
    int start = 0;
    int end = 0;
    selection(0, &start, &end);
    return end > start ? 1 : 0;
}

void TerminalAccessible::selection(int index, int *start, int *end) const
{
    *start = *end = 0;
    const std::optional<Selection> selected = view().terminal().selection();
    const int64_t first = top();
    if (index != 0 || !selected || selected->last.line < first || selected->first.line >= first + view().rows()) {
        return;
    }
    const ScreenText text = screen();
    Line line;
    const auto offsetOf = [&](Position at, bool after) {
        if (at.line < first) {
            return 0;
        }
        if (at.line >= first + view().rows()) {
            return static_cast<int>(text.text.size());
        }
        std::vector<qsizetype> offsets;
        view().terminal().line(at.line, line);
        const QString row = rowText(view().terminal(), line, &offsets);
        const auto column = static_cast<size_t>(at.column) + (after ? 1 : 0);
        const auto number = static_cast<qsizetype>(at.line - first);
        const qsizetype limit = number + 1 < text.starts.size() ? text.starts[number + 1] - 1 : text.text.size();
        const qsizetype offset = text.starts[number] + (column < offsets.size() ? offsets[column] : row.size());
        return static_cast<int>(std::min(offset, limit));
    };
    *start = offsetOf(selected->first, false);
    *end = offsetOf(selected->last, true);
}

Position TerminalAccessible::positionOf(int offset) const
{
    const ScreenText text = screen();
    const qsizetype row = std::max<qsizetype>(0, text.rowAt(std::clamp<qsizetype>(offset, 0, text.text.size())));
    Line line;
    std::vector<qsizetype> offsets;
    view().terminal().line(top() + row, line);
    const QString whole = rowText(view().terminal(), line, &offsets);
    const qsizetype inRow = offset - text.starts[row];
    const auto found = std::upper_bound(offsets.begin(), offsets.end(), inRow);
    const auto column = static_cast<qsizetype>(found - offsets.begin()) - 1;
    const qsizetype beyond =
        inRow >= whole.size() ? inRow - whole.size() + static_cast<qsizetype>(offsets.size()) : column;
    return {top() + row, static_cast<int>(std::clamp<qsizetype>(beyond, 0, view().columns() - 1))};
}

void TerminalAccessible::addSelection(int start, int end)
{
    setSelection(0, start, end);
}

void TerminalAccessible::removeSelection(int index)
{
    Q_UNUSED(index)
    view().clearSelection();
}

void TerminalAccessible::setSelection(int index, int start, int end)
{
    Q_UNUSED(index)
    if (end > start) {
        view().select(positionOf(start), positionOf(end - 1));
    }
}

int TerminalAccessible::cursorPosition() const
{
    return static_cast<int>(screen().cursor);
}

/// The application alone moves its cursor.
void TerminalAccessible::setCursorPosition(int position)
{
    Q_UNUSED(position)
}

QString TerminalAccessible::text(int start, int end) const
{
    return screen().text.mid(start, end - start);
}

int TerminalAccessible::characterCount() const
{
    return static_cast<int>(screen().text.size());
}

QRect TerminalAccessible::characterRect(int offset) const
{
    const Position at = positionOf(offset);
    const QRect cell = view().cellRect(static_cast<int>(at.line - top()), at.column);
    return {view().mapToGlobal(cell.topLeft()), cell.size()};
}

int TerminalAccessible::offsetAtPoint(const QPoint &point) const
{
    const QPoint cell = view().cellAt(view().mapFromGlobal(point));
    const ScreenText text = screen();
    Line line;
    std::vector<qsizetype> offsets;
    view().terminal().line(top() + cell.y(), line);
    rowText(view().terminal(), line, &offsets);
    const auto column = static_cast<size_t>(cell.x());
    const qsizetype start = text.starts[cell.y()];
    const qsizetype limit = cell.y() + 1 < text.starts.size() ? text.starts[cell.y() + 1] - 1 : text.text.size();
    return static_cast<int>(column < offsets.size() ? std::min(start + offsets[column], limit) : limit);
}

void TerminalAccessible::scrollToSubstring(int start, int end)
{
    // What has an offset is on show.
    Q_UNUSED(start)
    Q_UNUSED(end)
}

QString TerminalAccessible::attributes(int offset, int *start, int *end) const
{
    const Terminal &terminal = view().terminal();
    const ScreenText text = screen();
    const qsizetype row = text.rowAt(std::clamp<qsizetype>(offset, 0, text.text.size()));
    const qsizetype rowStart = text.starts[row];
    const qsizetype rowEnd = row + 1 < text.starts.size() ? text.starts[row + 1] : text.text.size();
    Line line;
    std::vector<qsizetype> offsets;
    terminal.line(top() + row, line);
    const qsizetype size = rowText(terminal, line, &offsets).size();
    const auto styleAt = [&](qsizetype at) -> StyleId {
        const auto column = std::upper_bound(offsets.begin(), offsets.end(), at - rowStart) - offsets.begin() - 1;
        return column < 0 || at - rowStart >= size ? 0 : line.cells[static_cast<size_t>(column)].style;
    };
    const StyleId style = styleAt(offset);
    qsizetype from = std::clamp<qsizetype>(offset, rowStart, rowEnd);
    qsizetype to = from;
    while (from > rowStart && styleAt(from - 1) == style) {
        --from;
    }
    while (to < rowEnd && styleAt(to) == style) {
        ++to;
    }
    *start = static_cast<int>(from);
    *end = static_cast<int>(to);
    return describe(terminal, terminal.style(style));
}

// ---- announcements -----------------------------------------------------------------------------------------------

ScreenAnnouncer::ScreenAnnouncer(TerminalWidget *widget)
    : QObject(widget)
    , m_widget(widget)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(Pause);
    m_timer.callOnTimeout(this, [this] { tell(); });
}

void ScreenAnnouncer::note()
{
    if (QAccessible::isActive() && !m_timer.isActive()) {
        m_timer.start();
    }
}

void ScreenAnnouncer::tell()
{
    const Terminal &terminal = m_widget->terminal();
    const ScreenText now = ScreenText::of(terminal, terminal.screenTop() - m_widget->scrollPosition());
    const auto send = [&](auto &&event) {
        event.setCursorPosition(static_cast<int>(now.cursor));
        QAccessible::updateAccessibility(&event);
    };
    for (const TextChange &each : TextChange::between(m_told, now.text)) {
        const int at = static_cast<int>(each.position);
        if (each.removed.isEmpty()) {
            send(QAccessibleTextInsertEvent(m_widget, at, each.inserted));
        } else if (each.inserted.isEmpty()) {
            send(QAccessibleTextRemoveEvent(m_widget, at, each.removed));
        } else {
            send(QAccessibleTextUpdateEvent(m_widget, at, each.removed, each.inserted));
        }
    }
    if (now.cursor != m_cursor) {
        QAccessibleTextCursorEvent moved(m_widget, static_cast<int>(now.cursor));
        QAccessible::updateAccessibility(&moved);
    }
    m_told = now.text;
    m_cursor = now.cursor;
}

} // namespace vt
