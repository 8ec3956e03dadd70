#pragma once

#include "Models/RawText.h"

/// The sections of a server, in the order of their list and of their shortcuts.
enum class MainTab { Dashboard, Terminal, Processes, Services, Docker, Ports, Users, Packages, Files, Cron, Logs };

/// The text is the visible title (translated where it is shown), and what the navigation history keeps.
template<>
struct RawTexts<MainTab> {
    static constexpr std::array all{std::pair{MainTab::Dashboard, QStringView(u"Dashboard")},
                                    std::pair{MainTab::Terminal, QStringView(u"Terminal")},
                                    std::pair{MainTab::Processes, QStringView(u"Processes")},
                                    std::pair{MainTab::Services, QStringView(u"Services")},
                                    std::pair{MainTab::Docker, QStringView(u"Containers")},
                                    std::pair{MainTab::Ports, QStringView(u"Ports")},
                                    std::pair{MainTab::Users, QStringView(u"Users")},
                                    std::pair{MainTab::Packages, QStringView(u"Packages")},
                                    std::pair{MainTab::Files, QStringView(u"Files")},
                                    std::pair{MainTab::Cron, QStringView(u"Cron")},
                                    std::pair{MainTab::Logs, QStringView(u"Logs")}};
};

inline constexpr int kMainTabCount = static_cast<int>(RawTexts<MainTab>::all.size());

/// The digit that selects the section together with Ctrl: its place in the list, from 1. Nothing behind the ninth.
constexpr std::optional<int> shortcutDigit(MainTab tab)
{
    const int digit = static_cast<int>(tab) + 1;
    return digit <= 9 ? std::optional(digit) : std::nullopt;
}
