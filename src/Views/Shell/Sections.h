#pragma once

#include "Models/MainTab.h"
#include "Models/Server.h"
#include "Views/Theme/Icons.h"

#include <future>
#include <vector>

enum class SectionMark;
class Clock;
class CommandSSHManager;
class GlobalTerminalSessionManager;
class QPainter;
class QPointF;
class QWidget;
class SectionNavigation;
class SectionPage;
class ServerStore;
class Theme;

/// What pages work on; all of it outlives them.
struct SectionServices {
    ServerStore &store;
    CommandSSHManager &manager;
    const Clock &clock;
    GlobalTerminalSessionManager *terminals = nullptr; ///< without it the terminal section has only its title
    SectionNavigation *navigation = nullptr;           ///< the window's own
};

/// A section as the window knows it.
struct Section {
    /// Makes its page for one server; null where it cannot be had, which gives a page with the title only.
    using Make = SectionPage *(*)(const Theme &theme, const SectionServices &services, const Server &server,
                                  QWidget *parent);

    MainTab tab;
    const char *title; ///< the tab's raw text, to be translated
    IconName icon;
    Make make;
};

namespace Sections
{

const Section &of(MainTab tab);

/// In the operator's language.
QString title(MainTab tab);

/// "Dashboard (Ctrl+1)"; only the title for a section without a shortcut.
QString toolTip(MainTab tab);

/// What selects the section from the keyboard, as it is shown; empty for none.
QString shortcutText(MainTab tab);

/// What a mark says, in words; empty for none.
QString described(SectionMark mark);

/// A dot at the upper right of the section's icon; nothing for no mark.
void paintMark(QPainter &painter, const Theme &theme, SectionMark mark, const QPointF &iconTopRight);

/// Draws the sections' icons on another processor, for a list that is painted after the end of this object's life.
class IconPreparation
{
public:
    /// In the colour and for the pixel ratio of that list.
    IconPreparation(const QColor &color, qreal pixelRatio);
    /// Waits for them.
    ~IconPreparation();
    IconPreparation(const IconPreparation &) = delete;
    IconPreparation &operator=(const IconPreparation &) = delete;

private:
    QColor m_color;
    std::future<std::vector<QImage>> m_pictures;
};

SectionPage *makePage(MainTab tab, const Theme &theme, const SectionServices &services, const Server &server,
                      QWidget *parent);

} // namespace Sections
