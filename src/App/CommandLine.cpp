#include "App/CommandLine.h"

#include "App/Constants.h"
#include "Models/UserDefaults.h"
#include "Version.h"

#include <QCommandLineParser>
#include <QDir>

using namespace Qt::StringLiterals;

QString CommandLine::profile() const
{
    return profileDirectory.isEmpty() ? UserDefaults::defaultDirectory() : profileDirectory;
}

CommandLine CommandLine::parse(int argc, char **argv)
{
    if (argc < 2) {
        return {};
    }
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const QCommandLineOption profile(u"profile"_s, u"Keep settings and servers in DIR."_s, u"DIR"_s);
    const QCommandLineOption render(
        u"render"_s, u"Select the first server, write pictures of the window into DIR, and quit."_s, u"DIR"_s);
    const QCommandLineOption measure(
        u"measure-start"_s, u"Print how long the first painting took and the memory in use then, and quit."_s);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Looks after many Linux servers over ssh."_s);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({profile, render, measure});

    CommandLine line;
    if (!parser.parse(arguments)) {
        line.message = u"tarnwell: "_s + parser.errorText();
        line.exitCode = 2;
    } else if (!parser.positionalArguments().isEmpty()) {
        line.message = u"tarnwell: unexpected argument: "_s + parser.positionalArguments().constFirst();
        line.exitCode = 2;
    } else if (parser.isSet(help)) {
        const QCoreApplication application(argc, argv); // the help names the program by it
        line.message = parser.helpText().trimmed();
        line.exitCode = 0;
    } else if (parser.isSet(version)) {
        line.message = Constants::kApplicationName + u' ' + QLatin1StringView(TARNWELL_VERSION);
        line.exitCode = 0;
    }
    if (parser.isSet(profile)) {
        line.profileDirectory = QDir(parser.value(profile)).absolutePath();
    }
    if (parser.isSet(render)) {
        line.renderDirectory = QDir(parser.value(render)).absolutePath();
    }
    line.measuresStart = parser.isSet(measure);
    return line;
}
