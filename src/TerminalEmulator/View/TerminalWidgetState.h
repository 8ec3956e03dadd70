#pragma once

#include "TerminalEmulator/Engine/Terminal.h"
#include "TerminalEmulator/View/Feeder.h"
#include "TerminalEmulator/View/Finder.h"
#include "TerminalEmulator/View/OverlayScrollBar.h"
#include "TerminalEmulator/View/ScreenImage.h"
#include "TerminalEmulator/View/TerminalAccessible.h"
#include "TerminalEmulator/View/TerminalWidget.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QTimer>

class QLabel;
class QPainter;

namespace vt
{

/// What a TerminalWidget is made of.
struct TerminalWidget::State {
    static constexpr int SyncTimeout = 150;      ///< milliseconds the application may hold its output back
    static constexpr int SlowestFrame = 250;     ///< milliseconds between frames during a flood
    static constexpr int FrameShare = 16;        ///< of that time frames take one part at most
    static constexpr int SliceTime = 7;          ///< milliseconds a frame draws before it leaves the rest to the next
    static constexpr int LongestSlices = 40;     ///< milliseconds until a frame in slices is shown as far as it is
    static constexpr qsizetype FloodScreens = 4; ///< bytes for each cell between two frames that nobody can read
    static constexpr int ResizeDelay = 25;       ///< milliseconds a size must stand before it counts
    static constexpr int BellDuration = 100;     ///< milliseconds of the visual bell
    static constexpr int SelectInterval = 40;    ///< milliseconds between two steps of scrolling while selecting
    static constexpr int BellPause = 600;        ///< milliseconds between two of them

    explicit State(TerminalWidget *owner);

    // ---- output, in TerminalWidget.cpp
    void consume(std::string_view bytes);
    void send(const std::string &bytes);
    void handle(const Event &event);
    void setTitle(const QString &text);

    // ---- size and look, in TerminalWidget.cpp
    void makeFont();
    void applyColors();
    void applySize();
    void setGrid(int columns, int rows);
    QRect gridRect() const; ///< in device pixels
    QRect cellRect(int row, int column, int columns = 1) const;
    QRegion toWidget(const QRegion &device) const;

    // ---- frames and painting, in TerminalPainting.cpp
    void requestFrame();
    void frame();
    void draw(QDeadlineTimer until);
    int frameInterval() const;
    void invalidate();
    void paint(QPainter &painter, const QRegion &region);
    void paintCursor(QPainter &painter);
    void paintPreedit(QPainter &painter);
    std::vector<RowMark> marks(int64_t line) const;
    QRect
    cursorRect() const; ///< where the cursor was last drawn or is to be drawn, in device pixels; empty if unseen
    void touchCursor();
    void updateBlinking();
    void showCursor(); ///< as if it had just begun to blink

    // ---- place, in TerminalPainting.cpp
    int64_t topLine() const;
    void scrollTo(int64_t top);

    void placeScrollBar();
    void reveal(const SearchHit &hit);

    // ---- mouse, in TerminalMouse.cpp
    Position positionAt(QPointF point) const; ///< the cell, within what is on show
    Position boundaryAt(QPointF point) const; ///< the nearest gap between cells: before that column
    bool report(MouseEvent::Action action, MouseButton button, QPointF point, Qt::KeyboardModifiers modifiers);
    bool isReported(Qt::KeyboardModifiers modifiers) const;
    void pressed(const QMouseEvent &event);
    void select(QPointF point, Qt::KeyboardModifiers modifiers);
    void extendSelection(QPointF point);
    void scrollWhileSelecting();
    void endSelection();
    void hover(QPointF point, bool wanted);
    void showMenu(QPoint global, QPointF point);

    // ---- clipboard, in TerminalClipboard.cpp
    void writeClipboard(const std::string &text, const std::string &target);
    void pasteNow(const QString &text);

    // ---- keys, in TerminalInput.cpp
    bool run(const QKeyEvent &event);
    void typed();

    TerminalWidget *const widget;
    Terminal terminal;
    TerminalDelegate *delegate = nullptr;
    Feeder feeder;

    QFont font;
    qreal baseSize = 0; ///< points, without zoom
    qreal lineHeight = 1.05;
    TerminalColors colors;
    ViewColors viewColors;
    std::unique_ptr<CellFont> cells;
    std::unique_ptr<RowPainter> painter;
    ScreenImage screen;
    QString title;

    bool follows = true; ///< shows the end
    int64_t top = 0;     ///< line of the first row on show, unless it follows

    QTimer frameTimer;
    QElapsedTimer sinceFrame;
    qsizetype taken = 0;      ///< bytes since the last frame
    bool isFlooded = false;   ///< at the last frame
    QElapsedTimer sinceWhole; ///< runs while a frame is drawn in slices
    QRegion unseen;           ///< drawn, but not shown yet; device pixels, from the grid's corner
    qint64 frameCost = 0;     ///< nanoseconds of the last frame and its painting
    QElapsedTimer heldBack;   ///< runs while the application holds its output back
    QTimer resizeTimer;
    QBasicTimer blinkTimer;
    bool blinkPhase = true; ///< shown
    QTimer bellTimer;
    QElapsedTimer sinceBell;

    MouseButton reportedButton = MouseButton::None; ///< held down, and the application was told
    std::string lastReport;
    int clicks = 0;
    QElapsedTimer sinceClick;
    QPointF lastClick;
    bool isSelecting = false;
    SelectionKind selectionKind = SelectionKind::Character;
    Position anchor; ///< of a selection by characters a boundary, else a cell
    QPointF pointer;
    QTimer selectTimer; ///< scrolls while the pointer is held beyond the edge
    std::optional<Terminal::FoundLink> hovered;
    QLabel *linkLabel = nullptr; ///< tells where the link under the pointer leads
    OverlayScrollBar *scrollBar = nullptr;
    Finder finder;
    std::vector<SearchHit> shownHits;
    ScreenAnnouncer announcer;
    QRgb ground = 0;   ///< of the margins, as last drawn
    QRect drawnCursor; ///< device pixels, where the cursor may be on the screen
    QString preedit;
    int preeditCursor = 0;
    QPoint wheelRest; ///< of angle or pixels that made no whole row
};

} // namespace vt
