// vt-window [--size COLSxROWS] [--font FAMILY] [--points N] [--light] [--clipboard] [--picture FILE]
//           -- COMMAND...
//
// A window with a command on a pseudo terminal in it. Ends with the command's status, or 128 and the number of the
// signal that ended it. --picture writes what is on show then.

#include "TerminalEmulator/View/LocalProcess.h"
#include "TerminalEmulator/View/TerminalWidget.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDesktopServices>
#include <QFontDatabase>

#include <cstdio>
#include <cstring>
#include <sys/wait.h>

namespace
{

/// Stands between the widget and the command.
class Host : public QObject, public vt::TerminalDelegate, public vt::LocalProcessDelegate
{
public:
    Host(vt::TerminalWidget &view, bool clipboard)
        : m_view(view)
        , m_clipboard(clipboard)
        , m_process(*this)
    {
        connect(&view, &vt::TerminalWidget::linkActivated, this,
                [](const QUrl &url) { QDesktopServices::openUrl(url); });
        connect(&view, &vt::TerminalWidget::titleChanged, &view, &QWidget::setWindowTitle);
        view.setDelegate(this);
    }

    int start(const QStringList &command)
    {
        return m_process.startProcess(command.constFirst(), command.sliced(1), {}, {m_view.columns(), m_view.rows()});
    }

    void terminalSends(const QByteArray &bytes) override { m_process.send(bytes); }

    void terminalResized(int columns, int rows, QSize pixels) override
    {
        m_process.setWindowSize(columns, rows, pixels);
    }

    bool terminalMayWriteClipboard(const QString &) override { return m_clipboard; }

    bool wantsOutput() const override { return m_view.wantsOutput(); }

    void dataReceived(QByteArrayView data) override { m_view.feed(data); }

    void processTerminated(int status) override
    {
        QCoreApplication::exit(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    }

private:
    vt::TerminalWidget &m_view;
    bool m_clipboard;
    vt::LocalProcess m_process;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Columns and rows."),
                                  QStringLiteral("COLSxROWS"), QStringLiteral("80x24"));
    const QCommandLineOption font(QStringLiteral("font"), QStringLiteral("The font."), QStringLiteral("FAMILY"),
                                  QStringLiteral("DejaVu Sans Mono"));
    const QCommandLineOption points(QStringLiteral("points"), QStringLiteral("Its size."), QStringLiteral("N"),
                                    QStringLiteral("10"));
    const QCommandLineOption light(QStringLiteral("light"), QStringLiteral("Dark text on light."));
    const QCommandLineOption clipboard(QStringLiteral("clipboard"),
                                       QStringLiteral("Lets programs write the clipboard."));
    const QCommandLineOption picture(QStringLiteral("picture"), QStringLiteral("Keeps the last look of it."),
                                     QStringLiteral("FILE"));
    parser.addOptions({size, font, points, light, clipboard, picture});
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("What to run."),
                                 QStringLiteral("-- COMMAND..."));
    parser.process(application);
    const QStringList command = parser.positionalArguments();
    int columns = 0;
    int rows = 0;
    if (command.isEmpty() || std::sscanf(qPrintable(parser.value(size)), "%dx%d", &columns, &rows) != 2) {
        parser.showHelp(2);
    }

    vt::TerminalWidget view;
    QFont face(parser.value(font));
    face.setPointSizeF(parser.value(points).toDouble());
    view.setTerminalFont(face);
    vt::TerminalColors colors;
    colors.foreground = parser.isSet(light) ? Qt::black : QColor(0xe6, 0xe6, 0xe6);
    colors.background = parser.isSet(light) ? Qt::white : Qt::black;
    view.setColors(colors);
    view.resizeGrid(columns, rows);
    view.resize(view.sizeHint());

    Host host(view, parser.isSet(clipboard));
    if (const int error = host.start(command); error != 0) {
        std::fprintf(stderr, "vt-window: %s: %s\n", qPrintable(command.constFirst()), std::strerror(error));
        return 127;
    }
    view.show();
    view.setFocus();
    const int status = QApplication::exec();
    view.setDelegate(nullptr);
    if (parser.isSet(picture)) {
        view.flushOutput();
        view.redisplay();
        view.grab().save(parser.value(picture));
    }
    return status;
}
