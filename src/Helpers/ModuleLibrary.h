#pragma once

#include <QString>
#include <QStringList>

class QObject;

/// Parts of the program that are libraries of their own, loaded when they are wanted: a start must not pay for the
/// outside libraries that only they need.
namespace ModuleLibrary
{

struct Loaded {
    QObject *object = nullptr; ///< the library's; lives until the program ends; null on failure
    QString error;             ///< why there is none
};

/// Loads the library of this file name, or gives what was loaded before.
Loaded load(const QString &fileName);

/// The same from the first of these directories that has it.
Loaded loadFrom(const QString &fileName, const QStringList &directories);

/// Where they are looked for: the directory of modules beside the installed program, and, for a program inside of a
/// build tree, that tree's.
QStringList directories(const QString &programDirectory);

} // namespace ModuleLibrary
