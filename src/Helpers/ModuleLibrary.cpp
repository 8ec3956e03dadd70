#include "Helpers/ModuleLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>

using namespace Qt::StringLiterals;

namespace ModuleLibrary
{

Loaded load(const QString &fileName)
{
    return loadFrom(fileName, directories(QCoreApplication::applicationDirPath()));
}

Loaded loadFrom(const QString &fileName, const QStringList &directories)
{
    for (const QString &directory : directories) {
        const QString path = QDir(directory).filePath(fileName);
        if (!QFileInfo::exists(path)) {
            continue;
        }
        QPluginLoader loader(path); // leaves the library in place when it goes
        QObject *const object = loader.instance();
        return {object, object ? QString() : loader.errorString()};
    }
    return {nullptr, QCoreApplication::translate("ModuleLibrary", "%1 is missing").arg(fileName)};
}

QStringList directories(const QString &programDirectory)
{
    const QDir program(programDirectory);
    QStringList places{QDir::cleanPath(program.filePath(QStringLiteral(TARNWELL_MODULES_FROM_PROGRAM)))};
    for (QDir above = program; !above.isRoot() && above.cdUp();) {
        if (above.exists(u"CMakeCache.txt"_s)) {
            places.append(above.filePath(QStringLiteral(TARNWELL_MODULES_IN_BUILD)));
            break;
        }
    }
    return places;
}

} // namespace ModuleLibrary
