#pragma once

#include "TerminalEmulator/Engine/Keys.h"
#include "TerminalEmulator/Engine/Types.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vt
{

class Emulation;
struct Link;

/// What changed on the screen since it was last asked for.
struct Damage {
    bool all = false;      ///< everything may have changed (screen switched, palette, size, region scrolled)
    int64_t scrolled = 0;  ///< rows the whole screen moved up; rows that only moved are not in `rows`
    std::vector<int> rows; ///< screen rows whose cells changed, ascending
    bool cursorMoved = false;
};

enum class SelectionKind : uint8_t { Character, Word, Line, Block };

/// A selection, first position before last, both inside. A Block is the rectangle between its corners' columns.
struct Selection {
    Position first;
    Position last;
    SelectionKind kind = SelectionKind::Character;
};

/// What to search for.
struct SearchQuery {
    std::string text;     ///< UTF-8
    bool isRegex = false; ///< see Regex.h for the grammar
    bool caseSensitive = false;
    bool wholeWords = false;
};

/// A hit: the cells from `first` to `last`, which may lie on different rows of one wrapped line.
struct SearchHit {
    Position first;
    Position last;
    bool operator==(const SearchHit &) const = default;
};

/// A terminal of the VT and xterm family without a screen: bytes go in, and out come cells, answers and events. It
/// never blocks, calls nothing of its embedder, and accepts any byte string in pieces of any size. One thread at a
/// time.
class Terminal
{
public:
    explicit Terminal(const Options &options = {});
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    // ---- bytes -----------------------------------------------------------------------------------------------
    /// Output of the application, UTF-8 unless it chose otherwise (ESC % @).
    void feed(std::string_view bytes);
    /// What the terminal has to answer; write it to the application. Empty if nothing. Taken means forgotten.
    std::string takeReplies();
    bool hasReplies() const;
    /// What happened since the last call, in order.
    std::vector<Event> takeEvents();

    // ---- geometry --------------------------------------------------------------------------------------------
    int columns() const;
    int rows() const;
    /// Changes the size; wrapped lines of the main screen are laid out anew. Clamped to 1 to Options::MaxColumns.
    void resize(int columns, int rows);
    /// The size of a cell in pixels, for reports.
    void setCellSize(int width, int height);
    /// Rows kept above the screen, 0 to Options::MaxScrollback; surplus rows go at once.
    void setScrollback(int rows);
    /// Rows now above the screen; 0 on the alternate screen.
    int historySize() const;
    /// Rows kept above the main screen, also while the alternate one shows.
    int savedLines() const;
    bool isAlternateScreen() const;
    /// Numbers of the oldest line, of the screen's first row, and of its last one.
    int64_t firstLine() const;
    int64_t screenTop() const;
    int64_t lastLine() const;
    /// Goes up each time lines were renumbered (a change of width): what was remembered by line is void.
    uint32_t reflowCount() const;

    // ---- what is to be drawn ---------------------------------------------------------------------------------
    /// Line `line` into `out` (whose memory is reused); false if there is none. Style and cluster numbers in it hold
    /// until the next feed(), resize() or reset().
    bool line(int64_t line, Line &out) const;
    /// The cell at a place of the visible screen; a blank one outside.
    Cell cell(int row, int column) const;
    const Style &style(StyleId id) const;
    /// Appends what a cell shows as UTF-8: nothing for a tail, a space for an empty cell.
    void appendText(const Cell &cell, std::string &out) const;
    char32_t firstCodePoint(const Cell &cell) const;
    /// The hyperlink of a style's link number, or null.
    const Link *link(uint32_t number) const;
    CursorState cursor() const;
    /// What changed since the last call, which is what a view has to draw again.
    Damage takeDamage();
    /// The application asked for its output not to be shown yet (mode 2026). Give up waiting after about 150 ms.
    bool isSynchronizing() const;
    /// Foreground and background are exchanged on the whole screen (DECSCNM).
    bool isReverseScreen() const;

    // ---- colours ---------------------------------------------------------------------------------------------
    Rgb indexedColor(int index) const;
    Rgb foreground() const;
    Rgb background() const;
    Rgb cursorColor() const;
    /// The red, green and blue of a cell's colour; a default one is `fallback`.
    Rgb resolve(const Color &color, Rgb fallback) const;
    /// Sets what the colours are and are reset to; applications may change them on top.
    void setDefaultColors(Rgb foreground, Rgb background, Rgb cursor);
    void setDefaultIndexedColor(int index, Rgb color);

    // ---- state -----------------------------------------------------------------------------------------------
    const std::string &title() const;
    const std::string &iconName() const;
    /// The URI of the last OSC 7.
    const std::string &workingDirectory() const;
    /// Marks of shell integration, oldest first.
    std::vector<Mark> marks() const;
    /// Like RIS: a new terminal of the same size, the history kept.
    void reset();
    void clearHistory();
    /// clearHistory(), and on the main screen the rows above the cursor's go too: it becomes the first one.
    void clearAbove();

    // ---- input -----------------------------------------------------------------------------------------------
    /// The bytes a key sends in the current modes; empty if none (a release, a lone modifier).
    std::string encodeKey(const KeyEvent &event) const;
    /// The bytes for a mouse event; empty if the application does not want it. On the alternate screen a wheel
    /// without mouse tracking becomes cursor keys (mode 1007).
    std::string encodeMouse(const MouseEvent &event);
    bool wantsMouse() const;
    bool wantsMouseMotion() const; ///< also without a button
    /// Pasted text as it goes to the application: line ends become carriage returns, and if the application asked
    /// for it, brackets stand around it. Control characters that could end the brackets or act are taken out.
    std::string encodePaste(std::string_view text) const;
    bool isBracketedPaste() const;
    /// The report of a change of focus; empty if not wanted.
    std::string encodeFocus(bool focused) const;

    // ---- selection -------------------------------------------------------------------------------------------
    /// Starts a selection at a place: of one character (empty until extended), or the word or line there.
    void startSelection(Position at, SelectionKind kind);
    /// Moves its other end, by whole words or lines if it was started so.
    void extendSelection(Position to);
    void clearSelection();
    void selectAll();
    /// What is selected; nothing if it is empty or has scrolled away.
    std::optional<Selection> selection() const;
    bool isSelected(Position at) const;
    /// The selected text in UTF-8: blanks at line ends are left out, wrapped rows joined, others end with "\n".
    std::string selectedText() const;
    /// The text from `first` to `last`, both inside, by the same rules.
    std::string text(Position first, Position last, bool block = false) const;
    /// Characters besides letters and digits that belong to a word ("-./_~:@" and the like).
    void setWordCharacters(std::string_view characters);

    // ---- search ----------------------------------------------------------------------------------------------
    /// Sets what to look for; an empty text ends the search. False if the regular expression cannot be read.
    bool setSearch(const SearchQuery &query);
    /// The next hit after (forward) or before `from`, going round at the end; nothing if there is none at all.
    std::optional<SearchHit> findNext(Position from, bool forward) const;
    /// All hits that touch lines `first` to `last`.
    std::vector<SearchHit> hits(int64_t first, int64_t last) const;

    // ---- links -----------------------------------------------------------------------------------------------
    struct FoundLink {
        std::string uri;
        Position first;
        Position last;
    };

    /// The link at a place: of OSC 8, or an address that stands there as text.
    std::optional<FoundLink> linkAt(Position at) const;

    /// Bytes of memory the buffers hold.
    size_t memoryUse() const;

private:
    struct Extra;
    std::unique_ptr<Emulation> m_emulation;
    std::unique_ptr<Extra> m_extra;
};

} // namespace vt
