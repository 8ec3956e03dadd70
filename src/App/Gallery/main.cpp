#include "App/Gallery/Gallery.h"
#include "Views/Theme/Theme.h"

#include <QApplication>
#include <QDir>
#include <QScrollArea>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

int writePictures(Theme &theme, const QDir &directory)
{
    for (const bool isDark : {false, true}) {
        theme.setDark(isDark);
        Gallery gallery(theme);
        gallery.show(); // charts wait for it
        QApplication::processEvents();
        const QString path = directory.filePath(isDark ? u"gallery-dark.png"_s : u"gallery-light.png"_s);
        if (!gallery.picture().save(path)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            return 1;
        }
        std::puts(qPrintable(path));
    }
    return 0;
}

} // namespace

/// usage: tarnwell_gallery [--dark] | --render DIR
int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    Theme theme(arguments.contains(u"--dark"_s));
    theme.install();
    const qsizetype render = arguments.indexOf(u"--render"_s);
    if (render > 0 && render + 1 < arguments.size()) {
        return writePictures(theme, QDir(arguments.at(render + 1)));
    }
    QScrollArea window;
    window.setWidget(new Gallery(theme));
    window.setWindowTitle(window.widget()->windowTitle());
    window.resize(window.widget()->width() + 20, 800);
    window.show();
    return QApplication::exec();
}
