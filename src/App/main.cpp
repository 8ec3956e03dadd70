#include "App/CommandLine.h"
#include "App/Constants.h"
#include "App/FontPreparation.h"
#include "App/PictureScreens.h"
#include "App/SingleInstance.h"
#include "App/TarnwellApp.h"
#include "App/UnixSignals.h"
#include "Services/SSH/RuntimeDirectory.h"
#include "Version.h"

#include <QApplication>
#include <cstdio>
#include <vector>

namespace
{

// Whether this start goes on: one program runs for each profile. The exit code otherwise.
std::optional<int> claim(SingleInstance &instance)
{
    switch (instance.claim(qgetenv("XDG_ACTIVATION_TOKEN"))) {
    case SingleInstance::Claim::First:
        break;
    case SingleInstance::Claim::HandedOver:
        return 0;
    case SingleInstance::Claim::NoAnswer:
        std::fputs("tarnwell: a program with this profile runs already, and does not answer\n", stderr);
        return 1;
    }
    return std::nullopt;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setApplicationName(Constants::kApplicationName);
    QCoreApplication::setApplicationVersion(QLatin1StringView(TARNWELL_VERSION));
    const CommandLine line = CommandLine::parse(argc, argv);
    if (line.exitCode) {
        std::fprintf(*line.exitCode == 0 ? stdout : stderr, "%s\n", qPrintable(line.message));
        return *line.exitCode;
    }

    RuntimeDirectory runtimeDirectory;
    SingleInstance instance(runtimeDirectory, line.profile());
    if (line.isOrdinary()) {
        if (const std::optional<int> exitCode = claim(instance)) {
            return *exitCode;
        }
    }

    FontPreparation fonts;
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
    fonts.wait();
    const UnixSignals signals;
    TarnwellApp tarnwell(line, runtimeDirectory);
    QObject::connect(&signals, &UnixSignals::endRequested, &tarnwell, &TarnwellApp::end);
    QObject::connect(&instance, &SingleInstance::raiseRequested, &tarnwell, &TarnwellApp::raiseWindow);
    tarnwell.start();
    instance.listen();
    return QApplication::exec();
}
