#include "TerminalEmulator/Engine/Modes.h"

#include <algorithm>
#include <iterator>

namespace vt
{

namespace
{

using enum ModeInfo::Kind;

constexpr ModeInfo Modes[] = {
    {1, false, Mode::Count, AlwaysReset, 3, false}, // GATM
    {2, false, Mode::KeyboardLocked, Settable, 1, false},
    {4, false, Mode::Insert, Settable, 1, false},
    {5, false, Mode::Count, AlwaysReset, 3, false},  // SRTM
    {7, false, Mode::Count, AlwaysReset, 3, false},  // VEM
    {10, false, Mode::Count, AlwaysReset, 3, false}, // HEM
    {11, false, Mode::Count, AlwaysReset, 3, false}, // PUM
    {12, false, Mode::LocalEcho, Settable, 1, true},
    {13, false, Mode::Count, AlwaysReset, 3, false}, // FEAM
    {14, false, Mode::Count, AlwaysReset, 3, false}, // FETM
    {15, false, Mode::Count, AlwaysReset, 3, false}, // MATM
    {16, false, Mode::Count, AlwaysReset, 3, false}, // TTM
    {17, false, Mode::Count, AlwaysReset, 3, false}, // SATM
    {18, false, Mode::Count, AlwaysReset, 3, false}, // TSM
    {19, false, Mode::Count, AlwaysReset, 3, false}, // EBM
    {20, false, Mode::NewLine, Settable, 1, false},
    {1, true, Mode::CursorKeys, Settable, 1, false},
    {2, true, Mode::Ansi, Settable, 1, true},
    {3, true, Mode::Columns132, Settable, 1, false},
    {4, true, Mode::SmoothScroll, Settable, 1, false},
    {5, true, Mode::ReverseScreen, Settable, 1, false},
    {6, true, Mode::Origin, Settable, 1, false},
    {7, true, Mode::Autowrap, Settable, 1, true},
    {8, true, Mode::AutoRepeat, Settable, 1, true},
    {9, true, Mode::MouseX10, Settable, 1, false},
    {10, true, Mode::Count, AlwaysReset, 1, false}, // tool bar: none
    {12, true, Mode::CursorBlink, Settable, 1, true},
    {13, true, Mode::Count, AlwaysReset, 1, false}, // blinking by the embedder's choice: 12 alone decides
    {14, true, Mode::Count, AlwaysReset, 1, false}, // and nothing is exclusive-or'ed with it
    {18, true, Mode::PrintFormFeed, Settable, 1, false},
    {19, true, Mode::PrintExtent, Settable, 1, true},
    {25, true, Mode::CursorVisible, Settable, 1, true},
    {30, true, Mode::ScrollBar, Settable, 1, true},
    {34, true, Mode::RightToLeft, Settable, 1, false},
    {35, true, Mode::HebrewKeyboard, Settable, 1, false},
    {36, true, Mode::HebrewEncoding, Settable, 1, false},
    {38, true, Mode::Count, AlwaysReset, 1, false}, // DECTEK: there is no such screen to go to
    {40, true, Mode::Allow132, Settable, 1, false},
    {41, true, Mode::MoreFix, Settable, 1, false},
    {42, true, Mode::NationalSets, Settable, 1, false},
    {43, true, Mode::Count, AlwaysReset, 1, false}, // DECGEPM: no printer for graphics
    {44, true, Mode::MarginBell, Settable, 1, false},
    {45, true, Mode::ReverseWrap, Settable, 1, false},
    {46, true, Mode::Count, AlwaysReset, 1, false}, // logging to a file: never
    {47, true, Mode::AltScreen47, Settable, 1, false},
    {57, true, Mode::GreekKeyboard, Settable, 1, false},
    {60, true, Mode::Count, AlwaysReset, 1, false}, // DECHCCM: the page is never wider than the screen
    {61, true, Mode::VerticalCoupling, Settable, 1, false},
    {64, true, Mode::PageCoupling, Settable, 1, false},
    {66, true, Mode::KeypadApplication, Settable, 1, false},
    {67, true, Mode::BackarrowSendsBs, Settable, 1, false},
    {68, true, Mode::KeyboardUsage, Settable, 1, false},
    {69, true, Mode::LeftRightMargins, Settable, 4, false},
    {73, true, Mode::TransmitRateLimit, Settable, 1, false},
    {80, true, Mode::Count, AlwaysReset, 1, false}, // DECSDM: no sixel graphics
    {81, true, Mode::KeyPosition, Settable, 1, false},
    {95, true, Mode::NoClearOnColumns, Settable, 5, false},
    {96, true, Mode::RightToLeftCopy, Settable, 1, false},
    {97, true, Mode::CrtSave, Settable, 1, false},
    {98, true, Mode::AutoResize, Settable, 1, false},
    {99, true, Mode::ModemControl, Settable, 1, false},
    {100, true, Mode::AutoAnswerback, Settable, 1, false},
    {101, true, Mode::ConcealAnswerback, Settable, 1, false},
    {102, true, Mode::IgnoreNull, Settable, 1, false},
    {103, true, Mode::HalfDuplex, Settable, 1, false},
    {104, true, Mode::SecondaryKeyboard, Settable, 1, false},
    {106, true, Mode::OverScan, Settable, 1, false},
    {1000, true, Mode::Mouse1000, Settable, 1, false},
    {1001, true, Mode::Mouse1001, Settable, 1, false},
    {1002, true, Mode::Mouse1002, Settable, 1, false},
    {1003, true, Mode::Mouse1003, Settable, 1, false},
    {1004, true, Mode::FocusEvents, Settable, 1, false},
    {1005, true, Mode::MouseUtf8, Settable, 1, false},
    {1006, true, Mode::MouseSgr, Settable, 1, false},
    {1007, true, Mode::AlternateScroll, Settable, 1, true},
    {1010, true, Mode::ScrollOnOutput, Settable, 1, false},
    {1011, true, Mode::ScrollOnKey, Settable, 1, true},
    {1014, true, Mode::Count, AlwaysSet, 1, false}, // fast scrolling: frames are never drawn for each line
    {1015, true, Mode::MouseUrxvt, Settable, 1, false},
    {1016, true, Mode::MousePixels, Settable, 1, false},
    {1034, true, Mode::EightBitMeta, Settable, 1, false},
    {1035, true, Mode::NumLockModifiers, Settable, 1, true},
    {1036, true, Mode::MetaSendsEscape, Settable, 1, true},
    {1037, true, Mode::DeleteSendsDel, Settable, 1, false},
    {1039, true, Mode::AltSendsEscape, Settable, 1, true},
    {1040, true, Mode::KeepSelection, Settable, 1, false},
    {1041, true, Mode::SelectToClipboard, Settable, 1, false},
    {1042, true, Mode::BellIsUrgent, Settable, 1, false},
    {1043, true, Mode::PopOnBell, Settable, 1, false},
    {1044, true, Mode::KeepClipboard, Settable, 1, false},
    {1045, true, Mode::ReverseWrapExtended, Settable, 1, false},
    {1046, true, Mode::AltScreenAllowed, Settable, 1, true},
    {1047, true, Mode::AltScreen1047, Settable, 1, false},
    {1048, true, Mode::SaveCursor1048, Settable, 1, false},
    {1049, true, Mode::AltScreen1049, Settable, 1, false},
    {1050, true, Mode::FunctionTerminfo, Settable, 1, false},
    {1051, true, Mode::FunctionSun, Settable, 1, false},
    {1052, true, Mode::FunctionHp, Settable, 1, false},
    {1053, true, Mode::FunctionSco, Settable, 1, false},
    {1060, true, Mode::KeyboardLegacy, Settable, 1, false},
    {1061, true, Mode::KeyboardVt220, Settable, 1, false},
    {1070, true, Mode::Count, AlwaysReset, 1, false}, // colour registers of a graphic's own: no graphics
    {2004, true, Mode::BracketedPaste, Settable, 1, false},
    {2026, true, Mode::Synchronized, Settable, 1, false},
    {2027, true, Mode::GraphemeClusters, AlwaysSet, 1, true},
    {2031, true, Mode::ColorSchemeReports, Settable, 1, false},
    {2048, true, Mode::SizeReports, Settable, 1, false},
};

} // namespace

const ModeInfo *modeInfo(int number, bool isPrivate)
{
    const auto *found = std::find_if(std::begin(Modes), std::end(Modes), [&](const ModeInfo &info) {
        return info.number == number && info.isPrivate == isPrivate;
    });
    return found == std::end(Modes) ? nullptr : found;
}

bool initialState(Mode mode)
{
    const auto *found =
        std::find_if(std::begin(Modes), std::end(Modes), [&](const ModeInfo &info) { return info.mode == mode; });
    return found != std::end(Modes) && found->initial;
}

} // namespace vt
