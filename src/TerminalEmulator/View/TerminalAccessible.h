#pragma once

#include "TerminalEmulator/Engine/Terminal.h"

#include <QAccessibleWidget>
#include <QTimer>

namespace vt
{

class TerminalWidget;

/// What of a terminal a screen reader sees: the rows on show as lines of text, with blank ends left out.
struct ScreenText {
    QString text;
    QList<qsizetype> starts; ///< of each row in `text`
    qsizetype cursor = 0;

    /// Rows from line `top` on; the cursor is at the end if it is not among them.
    static ScreenText of(const Terminal &terminal, int64_t top);

    /// The row that holds an offset.
    qsizetype rowAt(qsizetype offset) const;
};

/// Tells what became of a text: what was taken out and put in at `position`. Text that moved up because lines were
/// added below is told as lines added, which is what is to be read aloud.
struct TextChange {
    qsizetype position = 0;
    QString removed;
    QString inserted;

    static QList<TextChange> between(const QString &before, const QString &after);
};

/// Terminal as a text of several lines that changes by itself.
class TerminalAccessible : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit TerminalAccessible(TerminalWidget *widget);

    /// Has Qt ask this class for terminals. To be called once.
    static void install();

    void *interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;

    using QAccessibleWidget::text;
    void selection(int index, int *start, int *end) const override;
    int selectionCount() const override;
    void addSelection(int start, int end) override;
    void removeSelection(int index) override;
    void setSelection(int index, int start, int end) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    QString text(int start, int end) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int start, int end) override;
    QString attributes(int offset, int *start, int *end) const override;

private:
    TerminalWidget &view() const;
    ScreenText screen() const;
    int64_t top() const;
    Position positionOf(int offset) const;
};

/// Tells assistive technology what changed on a terminal's screen, at most a few times a second.
class ScreenAnnouncer : public QObject
{
public:
    explicit ScreenAnnouncer(TerminalWidget *widget);

    /// Something may have changed. Costs nothing while nobody listens.
    void note();

private:
    void tell();

    TerminalWidget *const m_widget;
    QTimer m_timer;
    QString m_told;
    qsizetype m_cursor = -1;
};

} // namespace vt
