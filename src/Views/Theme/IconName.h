#pragma once

/// The icons in use, from Debian's package bootstrap-icons; the list of files stands in this folder's CMakeLists.txt.
enum class IconName {
    Plug,
    Refresh,
    Close,
    Info,
    Warning,
    Key,
    Lock,
    Servers,
    Server,
    Search,
    Add,
    Edit,
    Delete,
    ChevronUp,
    ChevronDown,
    Clear,
    Pin,
    CaretUp,
    CaretDown,
    More,
    Play,
    Stop,
    File,
    Clipboard
};
