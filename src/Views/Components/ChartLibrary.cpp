#include "Views/Components/ChartLibrary.h"

#include "Views/Components/ChartSurface.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto kFileName = "libtarnwell_charts.so"_L1;

} // namespace

namespace ChartLibrary
{

Loaded load()
{
    return loadFrom(directories(QCoreApplication::applicationDirPath()));
}

Loaded loadFrom(const QStringList &directories)
{
    for (const QString &directory : directories) {
        const QString path = QDir(directory).filePath(kFileName);
        if (!QFileInfo::exists(path)) {
            continue;
        }
        QPluginLoader loader(path); // leaves the library in place when it goes
        auto *factory = qobject_cast<ChartFactory *>(loader.instance());
        return {factory, factory ? QString() : loader.errorString()};
    }
    return {nullptr, QCoreApplication::translate("ChartLibrary", "%1 is missing").arg(kFileName)};
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

} // namespace ChartLibrary
