#pragma once

#include <cstdint>

namespace vt
{

/// Switches of the terminal: ANSI modes (SM, RM) and private ones (DECSET, DECRST).
enum class Mode : uint8_t {
    // ANSI
    KeyboardLocked, ///< KAM 2
    Insert,         ///< IRM 4
    LocalEcho,      ///< SRM 12, inverted: set means no local echo
    NewLine,        ///< LNM 20
    // private
    CursorKeys,        ///< DECCKM 1
    Ansi,              ///< DECANM 2; reset means VT52
    Columns132,        ///< DECCOLM 3
    SmoothScroll,      ///< DECSCLM 4
    ReverseScreen,     ///< DECSCNM 5
    Origin,            ///< DECOM 6
    Autowrap,          ///< DECAWM 7
    AutoRepeat,        ///< DECARM 8
    MouseX10,          ///< 9
    CursorBlink,       ///< 12
    PrintFormFeed,     ///< DECPFF 18
    PrintExtent,       ///< DECPEX 19
    CursorVisible,     ///< DECTCEM 25
    ScrollBar,         ///< 30
    RightToLeft,       ///< DECRLM 34
    HebrewKeyboard,    ///< DECHEBM 35
    HebrewEncoding,    ///< DECHEM 36
    Allow132,          ///< 40
    MoreFix,           ///< 41
    NationalSets,      ///< DECNRCM 42
    MarginBell,        ///< 44
    ReverseWrap,       ///< 45
    AltScreen47,       ///< 47
    GreekKeyboard,     ///< DECNAKB 57
    VerticalCoupling,  ///< DECVCCM 61
    PageCoupling,      ///< DECPCCM 64
    KeypadApplication, ///< DECNKM 66
    BackarrowSendsBs,  ///< DECBKM 67
    KeyboardUsage,     ///< DECKBUM 68
    LeftRightMargins,  ///< DECLRMM 69
    TransmitRateLimit, ///< DECXRLM 73
    KeyPosition,       ///< DECKPM 81
    NoClearOnColumns,  ///< DECNCSM 95
    RightToLeftCopy,   ///< DECRLCM 96
    CrtSave,           ///< DECCRTSM 97
    AutoResize,        ///< DECARSM 98
    ModemControl,      ///< DECMCM 99
    AutoAnswerback,    ///< DECAAM 100
    ConcealAnswerback, ///< DECCANSM 101
    IgnoreNull,        ///< DECNULM 102
    HalfDuplex,        ///< DECHDPXM 103
    SecondaryKeyboard, ///< DECESKM 104
    OverScan,          ///< DECOSCNM 106
    Mouse1000,
    Mouse1001,
    Mouse1002,
    Mouse1003,
    FocusEvents,         ///< 1004
    MouseUtf8,           ///< 1005
    MouseSgr,            ///< 1006
    AlternateScroll,     ///< 1007
    ScrollOnOutput,      ///< 1010
    ScrollOnKey,         ///< 1011
    MouseUrxvt,          ///< 1015
    MousePixels,         ///< 1016
    EightBitMeta,        ///< 1034
    NumLockModifiers,    ///< 1035
    MetaSendsEscape,     ///< 1036
    DeleteSendsDel,      ///< 1037
    AltSendsEscape,      ///< 1039
    KeepSelection,       ///< 1040
    SelectToClipboard,   ///< 1041
    BellIsUrgent,        ///< 1042
    PopOnBell,           ///< 1043
    KeepClipboard,       ///< 1044
    ReverseWrapExtended, ///< 1045
    AltScreenAllowed,    ///< 1046
    AltScreen1047,
    SaveCursor1048,
    AltScreen1049,
    FunctionTerminfo,   ///< 1050
    FunctionSun,        ///< 1051
    FunctionHp,         ///< 1052
    FunctionSco,        ///< 1053
    KeyboardLegacy,     ///< 1060
    KeyboardVt220,      ///< 1061
    BracketedPaste,     ///< 2004
    Synchronized,       ///< 2026
    GraphemeClusters,   ///< 2027
    ColorSchemeReports, ///< 2031
    SizeReports,        ///< 2048
    Count,
};

struct ModeInfo {
    enum Kind : uint8_t { Settable, AlwaysReset, AlwaysSet };

    uint16_t number;
    bool isPrivate;
    Mode mode; ///< meaningful for Settable only
    Kind kind;
    uint8_t level; ///< VT level from which it is known
    bool initial;
};

/// What is known about mode `number`, or null.
const ModeInfo *modeInfo(int number, bool isPrivate);
/// The modes' states after a reset.
bool initialState(Mode mode);

} // namespace vt
