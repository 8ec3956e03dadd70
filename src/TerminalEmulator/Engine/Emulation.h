#pragma once

#include "TerminalEmulator/Engine/Charsets.h"
#include "TerminalEmulator/Engine/Clusters.h"
#include "TerminalEmulator/Engine/Grid.h"
#include "TerminalEmulator/Engine/History.h"
#include "TerminalEmulator/Engine/Input.h"
#include "TerminalEmulator/Engine/Links.h"
#include "TerminalEmulator/Engine/Locator.h"
#include "TerminalEmulator/Engine/Modes.h"
#include "TerminalEmulator/Engine/Palette.h"
#include "TerminalEmulator/Engine/Parser.h"
#include "TerminalEmulator/Engine/Styles.h"
#include "TerminalEmulator/Engine/Types.h"
#include "TerminalEmulator/Engine/Unicode.h"

#include <array>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vt
{

/// Is told when text of the screen moved to other line numbers: lines `first` to `last` by `by`; what would leave
/// these lines is gone.
class LineObserver
{
public:
    virtual void linesMoved(int64_t first, int64_t last, int by) = 0;

protected:
    ~LineObserver() = default;
};

/// The terminal behind the parser: the screens and everything a sequence can change. Its operations are spread over
/// several files by topic (Print, Motion, Edit, Rectangles, Rendition, ModeSwitches, Reports, Commands, Windows,
/// Reset, Resize); Terminal is its public face.
class Emulation
{
    using Handler = void (Emulation::*)(const Sequence &);

public:
    explicit Emulation(const Options &options);

    void feed(std::string_view bytes);

    // ---- what the parser calls -------------------------------------------------------------------------------
    /// Takes text from `at` and returns where it ends: at a control character or at `end`.
    const uint8_t *text(const uint8_t *at, const uint8_t *end);

    /// A character's bytes were cut by the end of a block.
    bool isDecoding() const { return m_decodeNeed != 0; }

    void execute(uint8_t control);
    void escape(const Sequence &sequence);
    void control(const Sequence &sequence);

    /// A control sequence with neither prefix nor intermediates, as most are.
    void plainControl(const Sequence &sequence)
    {
        m_segmenter.reset();
        m_afterPrepend = false;
        if (const Handler handler = m_directControls[static_cast<unsigned char>(sequence.final) - 0x40u]) {
            (this->*handler)(sequence);
        }
    }

    /// `bell`: the string ended with BEL, and so shall the answer.
    void operatingSystemCommand(std::string_view text, bool bell);
    void deviceControl(const Sequence &sequence, std::string_view data);
    void vt52(char final);
    void vt52Address(int row, int column);

    // ---- what Terminal reads ---------------------------------------------------------------------------------
    int columns() const { return m_grid->columns(); }

    int rows() const { return m_grid->rows(); }

    bool isAlternate() const { return m_grid == &m_alternate.grid; }

    int64_t firstLine() const { return isAlternate() ? screenTop() : m_firstLine; }

    int64_t screenTop() const { return m_firstLine + static_cast<int64_t>(m_history.size()); }

    bool mode(Mode mode) const { return m_modes[static_cast<size_t>(mode)]; }

    /// Line number `line`, or false if there is none.
    bool readLine(int64_t line, Line &out) const;

    void resize(int columns, int rows);
    void resizeByEmbedder(int columns, int rows);
    void fullReset();
    /// fullReset(), and whatever sequence is under way is dropped.
    void hardReset();
    void clearHistory();
    void clearAbove();
    void setScrollback(size_t rows);
    size_t memoryUse() const;
    void reply(std::string_view text);
    void emitEvent(Event event);

    // Public on purpose: Terminal and the helpers beside it (selection, search) read the parts they need.
    Options m_options;
    Styles m_styles;
    Clusters m_clusters;
    Links m_links;
    History m_history;
    Palette m_palette;
    Locator m_locator;
    std::string m_replies;
    std::vector<Event> m_events;
    std::deque<Mark> m_marks; ///< in order of lines, one of a kind in each
    int64_t m_scrolled = 0;   ///< lines the screen moved up since damage was taken
    bool m_allDamaged = true;
    uint32_t m_reflows = 0;
    std::vector<Position *> m_tracked;      ///< positions that a reflow moves with their text
    LineObserver *m_lineObserver = nullptr; ///< null while nobody wants to know
    std::string m_title;
    std::string m_iconName;
    std::string m_clipboard;
    std::string m_workingDirectory;
    KeyOptions m_keyOptions;

    CursorState cursor() const;

    Grid &grid() { return *m_grid; }

    const Grid &grid() const { return *m_grid; }

    int keyboardFlags() const;

    bool isKeypadApplication() const { return m_keypadApplication; }

    bool sendsEightBit() const { return m_eightBitReplies; }

private:
    struct Charsets {
        std::array<Charset, 4> designated{};
        uint8_t left = 0;
        uint8_t right = 2;
        bool operator==(const Charsets &) const = default;
    };

    struct SavedCursor {
        int x = 0;
        int y = 0;
        bool pendingWrap = false;
        bool origin = false;
        Style pen;
        Charsets charsets;
        bool isSet = false;
    };

    struct Screen {
        Grid grid;
        SavedCursor saved;
        std::vector<int> keyboardStack{0}; ///< flags of the progressive keyboard protocol
    };
    enum class Protection : uint8_t { Off, Iso, Dec };
    enum class Erase : uint8_t { Plain, Selective };

    struct Entry {
        uint32_t key;
        uint8_t level; ///< VT level from which the function is known
        Handler handler;
    };

    static const std::vector<Entry> &controlTable();
    static const std::vector<Entry> &escapeTable();
    void buildDirect();

    // ---- Print.cpp -------------------------------------------------------------------------------------------
    void printAscii(const uint8_t *at, int count);
    bool printOne(uint8_t byte);
    const uint8_t *printUtf8(const uint8_t *at, const uint8_t *end);
    const uint8_t *printRun(const uint8_t *at, const uint8_t *end);
    const uint8_t *resumeUtf8(const uint8_t *at, const uint8_t *end);
    void printCodePoint(char32_t codePoint);
    void printByte(uint8_t byte);
    void putCharacter(uint32_t code, int columns);
    void join(char32_t codePoint, unicode::Property property);
    void widenOrNarrow(Row &row, int x, bool wide);
    bool cellBefore(int &x) const;
    void standaloneMark(char32_t codePoint, unicode::Property property);
    void wrap();
    int rightLimit(const Row &row) const;
    void updateTextPath();
    void finishDecode(char32_t codePoint);
    StyleId pen();
    Cell blank();
    void sweepStyles();
    void sweepClusters();

    // ---- Motion.cpp ------------------------------------------------------------------------------------------
    bool inColumnMargins() const { return m_x >= m_left && m_x <= m_right; }

    bool inRowMargins() const { return m_y >= m_top && m_y <= m_bottom; }

    void moveTo(int x, int y);         ///< clamped to the screen
    void address(int row, int column); ///< from 0, obeys origin mode
    int originRow() const;
    int originColumn() const;
    void index();
    void reverseIndex();
    void carriageReturn();
    void lineFeed();
    void cursorUp(int count);
    void cursorDown(int count);
    void cursorForward(int count);
    void cursorBack(int count);
    bool beginsText(bool isTop) const;
    void tabForward(int count);
    void tabBack(int count);
    void resetTabs();
    void saveCursor();
    void restoreCursor();
    void scrollUp(int count);
    void scrollDown(int count);
    void tellMoved(const Area &area, int by);
    void linesMoved(int64_t first, int64_t last, int by);

    Area marginArea() const { return {m_top, m_left, m_bottom, m_right}; }

    void resetMargins();

    void cuu(const Sequence &s);
    void cud(const Sequence &s);
    void cuf(const Sequence &s);
    void cub(const Sequence &s);
    void cnl(const Sequence &s);
    void cpl(const Sequence &s);
    void cha(const Sequence &s);
    void cup(const Sequence &s);
    void cht(const Sequence &s);
    void cbt(const Sequence &s);
    void vpa(const Sequence &s);
    void vpr(const Sequence &s);
    void hpr(const Sequence &s);
    void tbc(const Sequence &s);
    void decst8c(const Sequence &s);
    void decstbm(const Sequence &s);
    void decslrm(const Sequence &s);
    void scorc(const Sequence &s);
    void su(const Sequence &s);
    void sd(const Sequence &s);
    void hts(const Sequence &s);
    void ind(const Sequence &s);
    void ri(const Sequence &s);
    void nel(const Sequence &s);
    void decsc(const Sequence &s);
    void decrc(const Sequence &s);
    void decbi(const Sequence &s);
    void decfi(const Sequence &s);

    // ---- Edit.cpp --------------------------------------------------------------------------------------------
    void eraseRow(int y, int left, int right);
    void eraseDisplay(int what, Erase kind);
    void eraseLine(int what, Erase kind);
    void shiftColumns(int x, int count, bool insert);
    void ed(const Sequence &s);
    void el(const Sequence &s);
    void decsed(const Sequence &s);
    void decsel(const Sequence &s);
    void ech(const Sequence &s);
    void ich(const Sequence &s);
    void dch(const Sequence &s);
    void il(const Sequence &s);
    void dl(const Sequence &s);
    void sl(const Sequence &s);
    void sr(const Sequence &s);
    void decic(const Sequence &s);
    void decdc(const Sequence &s);
    void rep(const Sequence &s);
    void decaln(const Sequence &s);
    void lineSize(const Sequence &s);
    void spa(const Sequence &s);
    void epa(const Sequence &s);
    void decsca(const Sequence &s);

    // ---- Rectangles.cpp --------------------------------------------------------------------------------------
    std::optional<Area> area(const Sequence &s, int first) const;
    void decfra(const Sequence &s);
    void decera(const Sequence &s);
    void decsera(const Sequence &s);
    void deccra(const Sequence &s);
    void deccara(const Sequence &s);
    void decrara(const Sequence &s);
    void decsace(const Sequence &s);
    void decrqcra(const Sequence &s);
    void xtchecksum(const Sequence &s);
    template<class Change>
    void changeAttributes(const Sequence &s, Change change);
    uint32_t checksum(const Area &area) const;

    // ---- Rendition.cpp ---------------------------------------------------------------------------------------
    void sgr(const Sequence &s);
    int extendedColor(const Sequence &s, int at, Color &color) const;
    static void applySgr(Style &style, int code);
    std::string sgrText(const Style &style) const;
    void decscusr(const Sequence &s);
    void pushSgr(const Sequence &s);
    void popSgr(const Sequence &s);
    void reportSgr(const Sequence &s);

    void penChanged()
    {
        m_penKnown = false;
        m_blankKnown = false;
    }

    // ---- ModeSwitches.cpp ------------------------------------------------------------------------------------
    void sm(const Sequence &s);
    void rm(const Sequence &s);
    void decset(const Sequence &s);
    void decrst(const Sequence &s);
    void xtsave(const Sequence &s);
    void xtrestore(const Sequence &s);
    void decrqm(const Sequence &s);
    void ansiRqm(const Sequence &s);
    void setMode(Mode mode, bool on);

    void store(Mode mode, bool on) { m_modes[static_cast<size_t>(mode)] = on; }

    void setAlternate(bool on);
    void setColumns132(bool on);
    void setMouseMode(Mode mode, bool on);
    void decscl(const Sequence &s);
    void s7c1t(const Sequence &s);
    void s8c1t(const Sequence &s);
    void deckpam(const Sequence &s);
    void deckpnm(const Sequence &s);
    void designate(const Sequence &s);
    void lockingShift(const Sequence &s);
    void singleShift(const Sequence &s);
    void docs(const Sequence &s);
    void xtmodkeys(const Sequence &s);
    void xtunmodkeys(const Sequence &s);
    void xtqmodkeys(const Sequence &s);
    void xtfmtkeys(const Sequence &s);
    void xtqfmtkeys(const Sequence &s);
    void keyboardQuery(const Sequence &s);
    void keyboardPush(const Sequence &s);
    void keyboardPop(const Sequence &s);
    void keyboardSet(const Sequence &s);

    // ---- Reports.cpp -----------------------------------------------------------------------------------------
    void replyCsi(std::string_view body);
    void replyDcs(std::string_view body);
    void replyOsc(std::string_view body, bool bell);
    void da1(const Sequence &s);
    void da2(const Sequence &s);
    void da3(const Sequence &s);
    void decid(const Sequence &s);
    void dsr(const Sequence &s);
    void decdsr(const Sequence &s);
    void xtversion(const Sequence &s);
    void decreqtparm(const Sequence &s);
    void decrqpsr(const Sequence &s);
    void decrqde(const Sequence &s);
    void decrqupss(const Sequence &s);
    void assignPreferredSet(int size, std::string_view designator);
    void decrqtsr(const Sequence &s);
    void bellVolume(const Sequence &s);
    void pushColors(const Sequence &s);
    void popColors(const Sequence &s);
    void reportColors(const Sequence &s);
    void decelr(const Sequence &s);
    void decsle(const Sequence &s);
    void decefr(const Sequence &s);
    void decrqlp(const Sequence &s);
    std::string cursorInformation() const;
    void decrqss(std::string_view what);
    void xtgettcap(std::string_view names);
    void restorePresentation(int kind, std::string_view data);

    // ---- Commands.cpp ----------------------------------------------------------------------------------------
    void setTitle(int which, std::string_view text);
    void indexedColors(std::string_view text, bool special, bool bell);
    void resetIndexedColors(std::string_view text, bool special);
    void dynamicColors(int first, std::string_view text, bool bell);
    void hyperlink(std::string_view text);
    void clipboard(std::string_view text, bool bell);
    void shellMark(std::string_view text);
    void addMark(const Mark &mark);
    void dropLostMarks();
    void notification(int command, std::string_view text);

    // ---- Windows.cpp -----------------------------------------------------------------------------------------
    void windowOperation(const Sequence &s);
    void geometryReport(int operation);
    void titleReport(char kind, const std::string &text);
    void pushTitle(int which, int place);
    void popTitle(int which, int place);
    void titleModes(const Sequence &s);
    void titleModesReset(const Sequence &s);
    void decscpp(const Sequence &s);
    void decsnls(const Sequence &s);
    void requestSize(int columns, int rows);
    void maximize(bool on, bool horizontal, bool vertical);
    void decsasd(const Sequence &s);
    void decssdt(const Sequence &s);
    void activateStatusDisplay(bool on);

    // ---- Reset.cpp -------------------------------------------------------------------------------------------
    void decstr(const Sequence &s);
    void ris(const Sequence &s);
    void softReset();

    // ---- Resize.cpp ------------------------------------------------------------------------------------------
    void reflow(int columns, int rows);

    Parser m_parser;
    Screen m_main;
    Screen m_alternate;
    Grid *m_grid;
    int m_x = 0;
    int m_y = 0;
    bool m_pendingWrap = false;
    int m_top = 0;
    int m_bottom = 0;
    int m_left = 0;
    int m_right = 0;

    Style m_pen;
    StyleId m_penId = 0;
    bool m_penKnown = true;
    Cell m_blank;
    bool m_blankKnown = true;

    struct SavedPen {
        Style style;
        uint16_t flags = 0; ///< those of its flags that were saved
        bool underline = false;
        bool foreground = false;
        bool background = false;
    };

    std::vector<SavedPen> m_penStack;
    Protection m_protection = Protection::Off;

    std::array<bool, static_cast<size_t>(Mode::Count)> m_modes{};
    std::array<bool, static_cast<size_t>(Mode::Count)> m_savedModes{};
    Charsets m_charsets;
    Charset m_preferredSet = Charset::DecSupplemental; ///< DECAUPSS
    uint8_t m_singleShift = 0;                         ///< 2 or 3 for the next character
    bool m_plainText = true; ///< ASCII goes to the screen as it is: no character set, insert mode or shift
    unicode::Segmenter m_segmenter;
    bool m_afterPrepend = false;
    bool m_controlSeen = false; ///< a C1 control came as UTF-8: the parser's state may have changed
    uint32_t m_lastPrinted = 0; ///< code of the character REP repeats
    char32_t m_decoded = 0;     ///< UTF-8 under way
    uint8_t m_decodeNeed = 0;
    uint8_t m_decodeLow = 0x80;
    uint8_t m_decodeHigh = 0xbf;

    std::vector<bool> m_tabs;
    int64_t m_firstLine = 0;
    std::optional<int64_t> m_naturalTop; ///< the line that was the screen's top before resizing moved it
    bool m_naturalFull = false;          ///< and whether text reached the screen's last row then
    int m_level = 5;
    bool m_eightBitReplies = false;
    bool m_keypadApplication = false;
    int m_cursorStyle = 0;     ///< DECSCUSR
    int m_attributeExtent = 0; ///< DECSACE: 2 a rectangle, else the stream of positions
    int m_checksumFlags = 0;
    int m_titleModes = 0;
    std::array<int, 2> m_bellVolumes{};                 ///< warning (DECSWBV) and margin (DECSMBV), only told
    std::vector<std::optional<Palette>> m_paletteStack; ///< also written and read by number, whatever the depth
    size_t m_paletteDepth = 0;
    bool m_statusDisplayActive = false; ///< what would go to the page is dropped
    int m_statusDisplay = 0;

    struct SavedTitles {
        std::optional<std::string> title;
        std::optional<std::string> iconName;
    };

    std::array<SavedTitles, 10> m_titleStack; ///< also written and read by number, whatever the depth
    size_t m_titleDepth = 0;

    struct {
        int x = 0;
        int y = 0;
        bool iconified = false;
        bool fullScreen = false;
        int restoreColumns = 0;
        int restoreRows = 0;
    } m_window;

    std::array<Handler, 64> m_directControls{};
    std::array<const Entry *, 64> m_privateControls{}; ///< those with the prefix "?"
    std::array<Handler, 128> m_directEscapes{};
    uint32_t m_currentLink = 0;
};

} // namespace vt
