#include "Views/Theme/Theme.h"

#include "Views/Theme/TarnwellStyle.h"

#include <QApplication>
#include <QFontDatabase>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace
{

struct FontSpec {
    qreal pixels;
    QFont::Weight weight = QFont::Normal;
};

FontSpec specOf(TextStyle style)
{
    switch (style) {
    case TextStyle::Body:
        break;
    case TextStyle::Emphasis:
        return {13, QFont::DemiBold};
    case TextStyle::Detail:
        return {12.5};
    case TextStyle::Small:
    case TextStyle::Mono:
        return {12};
    case TextStyle::Caption:
        return {11.5, QFont::Medium};
    case TextStyle::Tag:
        return {10.5};
    case TextStyle::Heading:
        return {15, QFont::Bold};
    case TextStyle::Title:
        return {18, QFont::Bold};
    case TextStyle::Number:
        return {22, QFont::Bold};
    }
    return {13};
}

void setTexts(QPalette &palette, QPalette::ColorGroup group, const QColor &text, const QColor &dim)
{
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                            QPalette::HighlightedText, QPalette::BrightText}) {
        palette.setColor(group, role, text);
    }
    palette.setColor(group, QPalette::PlaceholderText, dim);
}

} // namespace

Theme::Theme(bool isDark, QObject *parent)
    : QObject(parent)
    , m_isDark(isDark)
    , m_families{u"Inter"_s, QGuiApplication::font().family()}
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    // Fractional sizes can only be given in points.
    m_pointsPerPixel = 72 / (screen ? screen->logicalDotsPerInchY() : 96);
}

QFont Theme::font(TextStyle style) const
{
    const FontSpec spec = specOf(style);
    QFont font;
    if (style == TextStyle::Mono) {
        font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        font.setStyleHint(QFont::Monospace);
    } else {
        font.setFamilies(m_families);
    }
    font.setPointSizeF(spec.pixels * m_pointsPerPixel);
    font.setWeight(spec.weight);
    font.setHintingPreference(QFont::PreferNoHinting); // even spacing at every scale
    font.setStyleStrategy(QFont::PreferNoShaping);     // where a text comes from elsewhere, Shaping says whether to
    return font;
}

QPalette Theme::palette() const
{
    const Tokens &t = tokens();
    QPalette palette;
    const std::pair<QPalette::ColorRole, QColor> roles[]{
        {QPalette::Window, t.window},      {QPalette::Base, t.surface},
        {QPalette::AlternateBase, t.soft}, {QPalette::Button, t.surface},
        {QPalette::ToolTipBase, t.raised}, {QPalette::Highlight, t.accent.soft},
        {QPalette::Link, t.accent.text},   {QPalette::LinkVisited, t.accent.text},
        {QPalette::Light, t.surface},      {QPalette::Midlight, t.soft},
        {QPalette::Mid, t.line},           {QPalette::Dark, t.line},
        {QPalette::Shadow, t.line},
    };
    for (const auto &[role, color] : roles) {
        palette.setColor(role, color);
    }
    setTexts(palette, QPalette::Active, t.text, t.dim);
    setTexts(palette, QPalette::Inactive, t.text, t.dim);
    setTexts(palette, QPalette::Disabled, t.faint, t.faint);
    return palette;
}

void Theme::install()
{
    QApplication::setStyle(new TarnwellStyle(*this));
    QApplication::setPalette(palette());
    QApplication::setFont(font(TextStyle::Body));
    m_isInstalled = true;
}

void Theme::setDark(bool isDark)
{
    if (std::exchange(m_isDark, isDark) == isDark) {
        return;
    }
    if (m_isInstalled) {
        QApplication::setPalette(palette());
    }
    Q_EMIT changed();
}
