#include "TerminalEmulator/View/CellFont.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace vt
{

namespace
{

/// A text that is shown as a coloured picture where a font has one: it says so, or is of the picture blocks.
bool isEmoji(const QString &text)
{
    if (text.contains(QChar(0xfe0e))) {
        return false;
    }
    const char32_t first = text.isEmpty() ? 0 : text.toUcs4().constFirst();
    return text.contains(QChar(0xfe0f)) || (first >= 0x1f000 && first < 0x1fb00);
}

} // namespace

CellFont::CellFont(const QFont &font, qreal devicePixelRatio, qreal lineHeight)
{
    const int pixels = std::max(1, qRound(QFontInfo(font).pixelSize() * devicePixelRatio));
    for (const Face each : {Regular, Bold, Italic, BoldItalic}) {
        Known &known = m_faces[each];
        known.font = font;
        known.font.setPixelSize(pixels);
        known.font.setBold((each & Bold) != 0 || font.bold());
        known.font.setItalic((each & Italic) != 0);
        known.font.setStyleHint(QFont::Monospace, QFont::PreferDefault);
        known.font.setKerning(false);
        known.raw = QRawFont::fromFont(known.font);
        known.low.fill(Unknown);
    }
    const QStringList families = QFontDatabase::families();
    for (const QString &each : families) {
        if (each.contains(QLatin1String("emoji"), Qt::CaseInsensitive)) {
            m_emojiFamilies.append(each);
        }
    }
    measure(lineHeight);
}

void CellFont::measure(qreal lineHeight)
{
    const QRawFont &raw = m_faces[Regular].raw;
    const QList<quint32> glyphs = raw.glyphIndexesForString(QStringLiteral("M"));
    const QList<QPointF> advances = raw.advancesForGlyphIndexes(glyphs);
    m_width = std::max(1, advances.isEmpty() ? 1 : qRound(advances.constFirst().x()));
    const qreal ascent = std::ceil(raw.ascent());
    const qreal own = ascent + std::ceil(raw.descent()) + std::max(0.0, raw.leading());
    m_height = std::max(1, qRound(own * lineHeight));
    m_baseline = static_cast<int>(ascent) + (m_height - static_cast<int>(own)) / 2;
    m_lineWidth = std::max(1, qRound(raw.lineThickness()));
    // Two lines and the gap between them fit below the baseline, however flat the font is.
    const int lowest = std::max(m_height - 3 * m_lineWidth, 0);
    m_underlineTop = std::min(m_baseline + std::max(1, qRound(raw.underlinePosition() - m_lineWidth / 2.0)), lowest);
    m_strikeTop = std::max(0, m_baseline - qRound(raw.xHeight() / 2) - m_lineWidth / 2);
}

quint32 CellFont::find(char32_t codePoint, Face face) const
{
    const QRawFont &raw = m_faces[face].raw;
    if (!raw.supportsCharacter(codePoint)) {
        return 0;
    }
    const QList<quint32> glyphs = raw.glyphIndexesForString(QString::fromUcs4(&codePoint, 1));
    return glyphs.size() == 1 ? glyphs.constFirst() : 0;
}

quint32 CellFont::findHigh(char32_t codePoint, Face face)
{
    QHash<char32_t, quint32> &known = m_faces[face].high;
    const auto found = known.constFind(codePoint);
    if (found != known.cend()) {
        return *found;
    }
    if (known.size() > MaxHigh) {
        known.clear();
    }
    return *known.insert(codePoint, find(codePoint, face));
}

CellFont::Placed CellFont::placed(char32_t codePoint, Face face, int columns)
{
    const quint64 key = quint64{codePoint} << 3 | quint64{face} << 1 | static_cast<quint64>(columns - 1);
    const auto found = m_placed.constFind(key);
    if (found != m_placed.cend()) {
        return *found;
    }
    if (m_placed.size() > MaxHigh) {
        m_placed.clear();
    }
    return *m_placed.insert(key, place(codePoint, face, columns));
}

/// Looks among the fonts that served other characters of the script; to lay each out costs a hundred times as much.
CellFont::Placed CellFont::place(char32_t codePoint, Face face, int columns)
{
    const QString text = QString::fromUcs4(&codePoint, 1);
    const QChar::Script script = QChar::script(codePoint);
    // Symbols have no script of their own, and letters that join need their neighbours.
    const bool isSimple = script == QChar::Script_Han || script == QChar::Script_Hiragana ||
                          script == QChar::Script_Katakana || script == QChar::Script_Hangul ||
                          script == QChar::Script_Bopomofo || script == QChar::Script_Yi || isEmoji(text);
    if (!isSimple) {
        return {};
    }
    const quint64 kind = static_cast<quint64>(script) << 3 | (isEmoji(text) ? 4u : 0u) | quint64{face};
    std::deque<Fallback> &fonts = m_fallbacks[kind];
    const qreal room = columns * m_width;
    const auto fits = [&](Fallback &fallback) -> Placed {
        const QList<quint32> glyphs =
            fallback.font.supportsCharacter(codePoint) ? fallback.font.glyphIndexesForString(text) : QList<quint32>();
        if (glyphs.size() != 1) {
            return {};
        }
        qreal width = columns == 2 ? fallback.wide : 0;
        if (width == 0) {
            width = fallback.font.advancesForGlyphIndexes(glyphs).constFirst().x();
            fallback.wide = columns == 2 ? width : 0;
        }
        return width <= room + 0.5 ? Placed{&fallback.font, glyphs.constFirst(), (room - width) / 2} : Placed{};
    };
    for (Fallback &each : fonts) {
        if (const Placed found = fits(each); found.font) {
            return found;
        }
    }
    const Layout &laidOut = layout(text, face, columns);
    if (laidOut.runs.size() != 1 || fonts.size() > 8) {
        return {};
    }
    fonts.push_back({laidOut.runs.constFirst().rawFont(), 0});
    return fits(fonts.back());
}

const CellFont::Layout &CellFont::layout(const QString &text, Face face, int columns)
{
    const QString key = text + QChar(static_cast<char16_t>(face * 2 + columns));
    const auto found = m_layouts.constFind(key);
    if (found != m_layouts.cend()) {
        return *found;
    }
    if (m_layouts.size() > MaxKnown) {
        m_layouts.clear();
    }
    return *m_layouts.insert(key, makeLayout(text, face, columns));
}

CellFont::Layout CellFont::makeLayout(const QString &text, Face face, int columns) const
{
    Layout result;
    QFont font = m_faces[face].font;
    if (isEmoji(text) && !m_emojiFamilies.isEmpty()) {
        font.setFamilies(m_emojiFamilies + font.families());
    }
    const qreal room = columns * m_width;
    for (int attempt = 0; attempt < 2; ++attempt) {
        QTextLayout layout(text, font);
        QTextOption option;
        option.setWrapMode(QTextOption::NoWrap);
        option.setTextDirection(Qt::LeftToRight);
        layout.setTextOption(option);
        layout.beginLayout();
        QTextLine line = layout.createLine();
        layout.endLayout();
        if (!line.isValid()) {
            return result;
        }
        const qreal width = line.horizontalAdvance();
        if (attempt == 0 && width > room + 0.5) {
            font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * room / width)));
            continue;
        }
        result.runs = layout.glyphRuns();
        result.offset = {(room - width) / 2, -line.ascent()};
        break;
    }
    return result;
}

} // namespace vt
