#include "App/PictureScreens.h"

QList<QByteArray> PictureScreens::arguments()
{
    // The format is that of Qt's offscreen plugin, qoffscreenintegration.cpp.
    static constexpr char kScreens[] = R"({"screens": [
        {"name": "plain", "x": 0, "y": 0, "width": 1920, "height": 1200,
         "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
        {"name": "fine", "x": 1920, "y": 0, "width": 1920, "height": 1200,
         "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 2}]})";
    if (!m_description.open() || m_description.write(kScreens) < 0 || !m_description.flush()) {
        return {"-platform", "offscreen"};
    }
    return {"-platform", "offscreen:configfile=" + m_description.fileName().toUtf8()};
}
