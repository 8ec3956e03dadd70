#include "Views/Theme/Tokens.h"

namespace
{

constexpr QColor rgb(QRgb value)
{
    return QColor(qRed(value), qGreen(value), qBlue(value));
}

constexpr Tone tone(QRgb color, QRgb soft, QRgb text)
{
    return {rgb(color), rgb(soft), rgb(text)};
}

constexpr Tone tone(QRgb color, QRgb soft)
{
    return tone(color, soft, color);
}

constexpr Tokens kLight{
    .window = rgb(0xF4F6F8),
    .side = rgb(0xECEFF3),
    .surface = rgb(0xFFFFFF),
    .raised = rgb(0xFFFFFF),
    .line = rgb(0xDFE4EA),
    .soft = rgb(0xEEF1F5),
    .text = rgb(0x18212D),
    .dim = rgb(0x5F6C7B),
    .faint = rgb(0x8C98A6),
    .onAccent = rgb(0xFFFFFF),
    .scrim = QColor(10, 16, 24, 107),
    // Where the colour itself is too pale for words on its soft ground, the words are a shade darker.
    .accent = tone(0x0B7285, 0xDDF1F4),
    .green = tone(0x2B8A4B, 0xDFF3E5, 0x267942),
    .red = tone(0xC92A2A, 0xFBE4E4, 0xC62929),
    .orange = tone(0xC2690F, 0xFCEBD7, 0xA1570C),
    .blue = tone(0x1C6DD0, 0xE0ECFB, 0x1A67C5),
    .purple = tone(0x6741D9, 0xEAE4FB),
    .gray = tone(0x6B7785, 0xE7EBEF, 0x5F6A76),
};

constexpr Tokens kDark{
    .window = rgb(0x11161C),
    .side = rgb(0x0D1116),
    .surface = rgb(0x181F27),
    .raised = rgb(0x1F2832),
    .line = rgb(0x2A3440),
    .soft = rgb(0x202933),
    .text = rgb(0xE4E9EF),
    .dim = rgb(0x9AA7B5),
    .faint = rgb(0x6F7D8C),
    .onAccent = rgb(0x06222A),
    .scrim = QColor(0, 0, 0, 128),
    .accent = tone(0x3FB8CB, 0x12343B),
    .green = tone(0x58C27D, 0x16321F),
    .red = tone(0xF07878, 0x3B1C1E),
    .orange = tone(0xE9A15B, 0x3A2A18),
    .blue = tone(0x6CA9F2, 0x172C45),
    .purple = tone(0xA58CF5, 0x2A2444),
    .gray = tone(0x8996A5, 0x262F3A, 0x9AA7B5),
};

} // namespace

const Tokens &Tokens::light()
{
    return kLight;
}

const Tokens &Tokens::dark()
{
    return kDark;
}

const Tone &Tokens::tone(ToneName name) const
{
    switch (name) {
    case ToneName::Accent:
        return accent;
    case ToneName::Green:
        return green;
    case ToneName::Red:
        return red;
    case ToneName::Orange:
        return orange;
    case ToneName::Blue:
        return blue;
    case ToneName::Purple:
        return purple;
    case ToneName::Gray:
        break;
    }
    return gray;
}
