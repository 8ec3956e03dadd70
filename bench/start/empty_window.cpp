// The least that a program with a window costs: an empty one of the size of ours.

#include "App/FirstPaint.h"
#include "App/StartMeasure.h"

#include <QApplication>
#include <QMainWindow>
#include <cstdio>

int main(int argc, char **argv)
{
    const QApplication app(argc, argv);
    QMainWindow window;
    window.resize(1280, 800);
    new FirstPaint(window, [] {
        std::fputs(qPrintable(StartMeasure::now().line() + QLatin1Char('\n')), stdout);
        QCoreApplication::quit();
    });
    window.show();
    return QApplication::exec();
}
