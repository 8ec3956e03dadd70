#pragma once

#include "Views/Theme/IconName.h"
#include "Views/Theme/ToneName.h"

#include <QString>
#include <QStringList>
#include <Qt>
#include <functional>
#include <optional>

/// How the cells of a column look.
enum class CellStyle {
    Plain,
    Emphasis, ///< a row's name
    Dim,
    Mono, ///< paths, commands
    Pill  ///< a state on a soft ground
};

enum class CellAlign {
    Left,
    Right ///< figures
};

/// What a column says about itself, whatever its records are.
struct ColumnLook {
    QString title{};
    CellStyle style = CellStyle::Plain;
    CellAlign align = CellAlign::Left;
    Qt::TextElideMode elide = Qt::ElideRight; ///< Qt::ElideMiddle for paths
    int width = 120;                          ///< at first, in device-independent pixels
    bool stretches = false;                   ///< takes the room that the others leave
    bool isSortable = true;
};

/// What one cell shows beside its column's look.
struct CellLook {
    QString text{};
    std::optional<ToneName> tone{};
    std::optional<IconName> icon{};
};

/// What a row's action says about itself.
struct ActionLook {
    QString label{}; ///< of the menu entry; of a button the tooltip and accessible name
    std::optional<IconName> icon{};
    bool isDestructive = false;
    bool isButton = false;    ///< stands in the row as well, not only in its menu; needs an icon
    bool isDefault = false;   ///< what Return and a double click do
    bool startsGroup = false; ///< a separator stands before it in the menu
};

/// What is asked before an action runs. The answer that changes nothing is the default.
struct RowQuestion {
    QString title{};
    QString text{};
    QString confirm{};                 ///< the words of the button that runs the action
    QString detail{};                  ///< shown monospaced below the text, for instance a whole command
    QString cancel{};                  ///< empty: "Cancel"
    std::function<void()> cancelled{}; ///< runs instead of the action
};
