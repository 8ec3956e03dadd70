#pragma once

#include "TerminalEmulator/View/TerminalDelegate.h"

#include <QColor>
#include <QUrl>
#include <QWidget>

#include <array>
#include <memory>
#include <optional>

namespace vt
{

class Terminal;
struct Position;
struct SearchQuery;

/// Colours of a terminal. What is left out follows from foreground and background.
struct TerminalColors {
    QColor foreground;
    QColor background;
    QColor cursor;
    QColor selection;
    std::optional<std::array<QColor, 16>> ansi; ///< 0 to 7 and their bright forms
};

/// A terminal on screen. Bytes of the application go in by feed(); what it gets back goes to the delegate. It works
/// the same while it is hidden, has no parent or was never given a size, so it can be taken out of one container and
/// put into another at any time.
///
/// Output is taken in slices between which the event loop runs. A host that reads a descriptor stops while
/// wantsOutput() is false and goes on at the next turn of the event loop or at outputWanted(): nothing piles up then.
class TerminalWidget : public QWidget
{
    Q_OBJECT

public:
    static constexpr int MinFontSize = 4; ///< points
    static constexpr int MaxFontSize = 72;
    static constexpr int FrameInterval = 16; ///< milliseconds; no two frames are closer
    static constexpr qsizetype MaxTitle = 256;

    explicit TerminalWidget(QWidget *parent = nullptr);
    ~TerminalWidget() override;

    /// Not owned; null for none. What is sent without one is lost.
    void setDelegate(TerminalDelegate *delegate);

    // ---- output ----------------------------------------------------------------------------------------------
    /// Output of the application, split anywhere. Never refused.
    void feed(QByteArrayView bytes);
    void feedText(const QString &text);
    /// Whether bytes fed now are shown at once; false while earlier ones wait or this turn's time is used up.
    bool wantsOutput() const;
    /// Bytes fed but not yet on the screen.
    qsizetype pendingOutput() const;
    /// Puts all of them on the screen now.
    void flushOutput();
    /// Clears screen and scrollback and all modes, and drops what waits.
    void reset();
    void clearScrollback();

    // ---- size ------------------------------------------------------------------------------------------------
    int columns() const;
    int rows() const;
    /// Gives the terminal a size of its own, clamped to 1 to 1000, until the next change of the widget's size.
    void resizeGrid(int columns, int rows);
    /// Rows kept above the screen.
    void setScrollbackLimit(int rows);
    /// Room for the present columns and rows.
    QSize sizeHint() const override;

    // ---- look ------------------------------------------------------------------------------------------------
    /// A font of fixed width. Takes effect at once; zooming starts anew from it.
    void setTerminalFont(const QFont &font);
    QFont terminalFont() const;
    void setColors(const TerminalColors &colors);
    TerminalColors colors() const;
    /// Multiple of the font's own height.
    void setLineHeight(qreal factor);
    /// Points added to the font's size, kept within MinFontSize and MaxFontSize.
    void zoom(int points);
    void resetZoom();
    /// Draws everything again.
    void redisplay();

    // ---- place in the scrollback -----------------------------------------------------------------------------
    /// Rows between what is shown and the end; 0 follows the output.
    int scrollPosition() const;
    void scrollTo(int rowsFromEnd);
    void scrollBy(int rows); ///< positive: towards the end

    // ---- selection and clipboard -----------------------------------------------------------------------------
    bool hasSelection() const;
    QString selectedText() const;
    void selectAll();
    void clearSelection();
    /// Into the clipboard; nothing happens without a selection.
    void copy();
    /// From the clipboard, by pasteText().
    void paste();
    /// Sends a text as if typed. One that a shell would run at once is asked about first.
    void pasteText(const QString &text);
    /// Clears the scrollback and what stands above the line of the cursor, which stays: it may be a prompt.
    void clear();

    // ---- search ----------------------------------------------------------------------------------------------
    /// What to look for in the whole buffer; all hits are marked, and the last one is gone to. An empty text ends the
    /// search. False if the regular expression cannot be read.
    bool setSearch(const SearchQuery &query);
    void findNext(); ///< towards the end, and round
    void findPrevious();
    int hitCount() const;   ///< grows while the buffer is looked through, at most 100,000
    int currentHit() const; ///< from 1; 0: none

    // ---- state -----------------------------------------------------------------------------------------------
    /// What the application calls its window: plain text without control characters.
    QString title() const;
    /// A cell on show, row 0 at the top, in the widget's coordinates; and the column and row nearest to a point.
    QRect cellRect(int row, int column) const;
    QPoint cellAt(QPoint point) const;
    /// Selects from one place to another, both inside.
    void select(Position first, Position last);
    /// The engine, to be read.
    const Terminal &terminal() const;

    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

Q_SIGNALS:
    /// All that was fed is on the screen, after some of it had to wait.
    void outputWanted();
    void titleChanged(const QString &title);
    /// The URI the shell told (OSC 7).
    void workingDirectoryChanged(const QString &uri);
    void bellRang();
    /// The application asks for attention. Plain text; the title may be empty.
    void notified(const QString &title, const QString &text);
    void scrollChanged();
    void selectionChanged();
    /// Hits were counted or another is the current one.
    void searchChanged(int hits, int current);
    /// By setTerminalFont() or zoom: the size in points.
    void fontSizeChanged(qreal points);
    /// An address was clicked with Control held, or chosen from the menu: http, https, ftp or mailto. The host opens
    /// it.
    void linkActivated(const QUrl &url);
    /// Ctrl+Shift+F or the context menu.
    void findRequested();

protected:
    bool event(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    struct State;

    std::unique_ptr<State> m_state;
};

} // namespace vt
