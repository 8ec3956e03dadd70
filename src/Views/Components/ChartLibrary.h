#pragma once

#include <QStringList>

class ChartFactory;

/// The library that draws charts, apart from the program and loaded when the first chart comes on show.
namespace ChartLibrary
{

struct Loaded {
    ChartFactory *factory = nullptr; ///< lives until the program ends; null on failure
    QString error;                   ///< why there is none
};

/// Loads it, or gives what was loaded before.
Loaded load();

/// The same from the first of these directories that has it.
Loaded loadFrom(const QStringList &directories);

} // namespace ChartLibrary
