#include "App/CommandLine.h"
#include "App/Constants.h"
#include "App/PictureScreens.h"
#include "App/TarnwellApp.h"
#include "App/UnixSignals.h"

#include <QApplication>
#include <cstdio>
#include <vector>

namespace
{

CommandLine parse(int argc, char **argv)
{
    if (argc < 2) {
        return {};
    }
    const QCoreApplication application(argc, argv); // no display is needed to be told the options
    return CommandLine::parse(QCoreApplication::arguments());
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setApplicationName(Constants::kApplicationName);
    const CommandLine line = parse(argc, argv);
    if (line.exitCode) {
        std::fprintf(*line.exitCode == 0 ? stdout : stderr, "%s\n", qPrintable(line.message));
        return *line.exitCode;
    }

    PictureScreens screens;
    QList<QByteArray> extra = line.renderDirectory ? screens.arguments() : QList<QByteArray>();
    std::vector<char *> arguments(argv, argv + argc);
    for (QByteArray &argument : extra) {
        arguments.push_back(argument.data());
    }
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);

    QApplication application(count, arguments.data());
    QGuiApplication::setDesktopFileName(Constants::kDesktopFileName);
    const UnixSignals signals;
    QObject::connect(&signals, &UnixSignals::endRequested, &application, &QCoreApplication::quit);
    TarnwellApp tarnwell(line);
    tarnwell.start();
    return QApplication::exec();
}
