#include "Views/Components/ChartLibrary.h"

#include "Helpers/ModuleLibrary.h"
#include "Views/Components/ChartSurface.h"

#include <QCoreApplication>

ChartLibrary::Loaded ChartLibrary::load()
{
    return loadFrom(ModuleLibrary::directories(QCoreApplication::applicationDirPath()));
}

ChartLibrary::Loaded ChartLibrary::loadFrom(const QStringList &directories)
{
    const ModuleLibrary::Loaded library =
        ModuleLibrary::loadFrom(QStringLiteral("libtarnwell_charts.so"), directories);
    return {qobject_cast<ChartFactory *>(library.object), library.error};
}
