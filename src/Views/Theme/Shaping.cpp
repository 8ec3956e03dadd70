#include "Views/Theme/Shaping.h"

namespace
{

constexpr char32_t kFirstMark = 0x300;  // what is below stands for itself
constexpr char32_t kFirstJamo = 0x1100; // parts of Hangul syllables join
constexpr char32_t kLastJamo = 0x11ff;
constexpr char32_t kFirstRegional = 0x1f1e6; // two make a flag
constexpr char32_t kLastRegional = 0x1f1ff;
constexpr char32_t kFirstSkinTone = 0x1f3fb;
constexpr char32_t kLastSkinTone = 0x1f3ff;

bool isBetween(char32_t character, char32_t first, char32_t last)
{
    return character >= first && character <= last;
}

bool standsForItself(char32_t character)
{
    if (character < kFirstMark) {
        return true;
    }
    if (isBetween(character, kFirstJamo, kLastJamo) || isBetween(character, kFirstRegional, kLastRegional) ||
        isBetween(character, kFirstSkinTone, kLastSkinTone)) {
        return false;
    }
    switch (QChar::script(character)) {
    case QChar::Script_Common:
    case QChar::Script_Unknown:
    case QChar::Script_Latin:
    case QChar::Script_Greek:
    case QChar::Script_Cyrillic:
    case QChar::Script_Armenian:
    case QChar::Script_Georgian:
    case QChar::Script_Han:
    case QChar::Script_Hangul:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Bopomofo:
        return !QChar::isMark(character);
    default:
        return false; // also all that takes the script of its neighbour: marks, joiners, variation selectors
    }
}

} // namespace

bool Shaping::isNeeded(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t character = text.at(i).unicode();
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            character = QChar::surrogateToUcs4(text.at(i), text.at(i + 1));
            ++i;
        }
        if (!standsForItself(character)) {
            return true;
        }
    }
    return false;
}

QFont Shaping::fit(QFont font, QStringView text)
{
    font.setStyleStrategy(isNeeded(text) ? QFont::PreferDefault : QFont::PreferNoShaping);
    return font;
}
