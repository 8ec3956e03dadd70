#include "Views/Terminal/TerminalLook.h"

#include "Views/Theme/Theme.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace
{

constexpr qreal kPointsPerInch = 72.0;

// The sixteen of Ethan Schoonover's palette, but for its bright colours: programs write bold and bright text in them,
// and the palette's own are shades of gray that vanish on one of the two grounds.
std::array<QColor, 16> solarizedAnsi()
{
    return {QColor(0x073642), QColor(0xdc322f), QColor(0x859900), QColor(0xb58900),
            QColor(0x268bd2), QColor(0xd33682), QColor(0x2aa198), QColor(0xeee8d5),
            QColor(0x657b83), QColor(0xcb4b16), QColor(0x859900), QColor(0xb58900),
            QColor(0x268bd2), QColor(0x6c71c4), QColor(0x2aa198), QColor(0xfdf6e3)};
}

} // namespace

vt::TerminalColors TerminalLook::colors(TerminalColorScheme scheme, const Theme &theme)
{
    vt::TerminalColors colors;
    switch (scheme) {
    case TerminalColorScheme::Default:
        colors.foreground = theme.tokens().text;
        colors.background = theme.tokens().surface;
        break;
    case TerminalColorScheme::Dark:
        colors.foreground = Qt::white;
        colors.background = Qt::black;
        break;
    case TerminalColorScheme::Light:
        colors.foreground = Qt::black;
        colors.background = Qt::white;
        break;
    case TerminalColorScheme::SolarizedDark:
        colors.foreground = QColor::fromRgbF(0.51F, 0.58F, 0.59F);
        colors.background = QColor::fromRgbF(0.0F, 0.17F, 0.21F);
        colors.ansi = solarizedAnsi();
        break;
    case TerminalColorScheme::SolarizedLight:
        colors.foreground = QColor::fromRgbF(0.40F, 0.48F, 0.51F);
        colors.background = QColor::fromRgbF(0.99F, 0.96F, 0.89F);
        colors.ansi = solarizedAnsi();
        break;
    }
    return colors;
}

QFont TerminalLook::font(const QString &family, int points)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (family != u"SF Mono"_s && QFontDatabase::hasFamily(family)) {
        font = QFont(family);
    }
    font.setStyleHint(QFont::Monospace);
    font.setWeight(QFont::Normal);
    const QScreen *const screen = QGuiApplication::primaryScreen();
    font.setPointSizeF(points * kPointsPerInch / (screen ? screen->logicalDotsPerInchY() : kPointsPerInch));
    return font;
}
