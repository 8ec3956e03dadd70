#pragma once

#include "Views/Theme/Tokens.h"

#include <QFont>
#include <QObject>
#include <QPalette>

class QWidget;

/// The steps of the type scale, each for one purpose.
enum class TextStyle {
    Body,     ///< 13 px
    Emphasis, ///< 13 px semibold: a name in a row, the title of a card
    Detail,   ///< 12.5 px: facts, buttons, the line below a title
    Small,    ///< 12 px: a second line in a row, footers
    Caption,  ///< 11.5 px: pills and table heads
    Tag,      ///< 10.5 px: labels of a server
    Heading,  ///< 15 px bold: the title of a sheet
    Title,    ///< 18 px bold: what a page is about
    Number,   ///< 22 px bold: the figure of a card
    Mono      ///< 12 px monospaced: paths, images, commands, log lines
};

/// The look of the program: which tokens hold at the moment, and the fonts. One object for the process, handed to
/// whoever paints. A switch between light and dark takes effect at once: the application's palette changes, which
/// repaints every widget, and `changed` is for those that keep colours.
class Theme : public QObject
{
    Q_OBJECT

public:
    explicit Theme(bool isDark = false, QObject *parent = nullptr);

    bool isDark() const { return m_isDark; }

    const Tokens &tokens() const { return m_isDark ? Tokens::dark() : Tokens::light(); }

    const Tone &tone(ToneName name) const { return tokens().tone(name); }

    /// The interface font is Inter where it is installed, otherwise the desktop's own.
    QFont font(TextStyle style) const;

    /// Dim words are the role PlaceholderText, so that a label follows the theme by its role alone.
    QPalette palette() const;

    /// Gives the application style, palette and font. The style belongs to the application and uses this theme, which
    /// therefore outlives the last widget.
    void install();

public Q_SLOTS:
    void setDark(bool isDark);

Q_SIGNALS:
    void changed();

private:
    bool m_isDark;
    bool m_isInstalled = false;
    QStringList m_families;
    qreal m_pointsPerPixel;
};
