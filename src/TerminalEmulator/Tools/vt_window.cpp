// vt-window [--size COLSxROWS] [--font FAMILY] [--points N] [--light] [--clipboard] [--picture FILE]
//           -- COMMAND...
//
// A window with a command on a pseudo terminal in it. Ends with the command's status, or 128 and the number of the
// signal that ended it. --picture writes what is on show then.

#include "TerminalEmulator/PseudoTerminal.h"
#include "TerminalEmulator/View/TerminalWidget.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QSocketNotifier>
#include <QTimer>

#include <cstdio>
#include <cstring>
#include <sys/wait.h>

namespace
{

/// Stands between the widget and the pseudo terminal.
class Host : public QObject, public vt::TerminalDelegate
{
public:
    Host(vt::PseudoTerminal &pty, vt::TerminalWidget &view, bool clipboard)
        : m_pty(pty)
        , m_view(view)
        , m_reading(pty.readable(), QSocketNotifier::Read)
        , m_writing(pty.master(), QSocketNotifier::Write)
        , m_clipboard(clipboard)
    {
        m_buffer.resize(1 << 16);
        m_writing.setEnabled(false);
        connect(&m_reading, &QSocketNotifier::activated, this, &Host::read);
        connect(&m_writing, &QSocketNotifier::activated, this, &Host::write);
        connect(&view, &vt::TerminalWidget::linkActivated, this,
                [](const QUrl &url) { QDesktopServices::openUrl(url); });
        connect(&view, &vt::TerminalWidget::titleChanged, &view, &QWidget::setWindowTitle);
        connect(&m_patience, &QTimer::timeout, this, &Host::reap);
        m_patience.start(100);
        view.setDelegate(this);
    }

    void terminalSends(const QByteArray &bytes) override
    {
        m_pty.write({bytes.data(), static_cast<size_t>(bytes.size())});
        m_writing.setEnabled(m_pty.hasPending());
    }

    void terminalResized(int columns, int rows, QSize pixels) override
    {
        m_pty.setSize(columns, rows, pixels.width(), pixels.height());
    }

    bool terminalMayWriteClipboard(const QString &) override { return m_clipboard; }

private:
    /// Reads while the view keeps up; the notifier calls again as long as something is there.
    void read()
    {
        while (m_view.wantsOutput()) {
            const ssize_t count = m_pty.read(m_buffer.data(), static_cast<size_t>(m_buffer.size()));
            if (count < 0) {
                return;
            }
            if (count == 0) {
                m_reading.setEnabled(false);
                m_ended = true;
                reap();
                return;
            }
            m_view.feed(QByteArrayView(m_buffer.constData(), count));
        }
    }

    void write() { m_writing.setEnabled(!m_pty.flush()); }

    void reap()
    {
        int status = 0;
        if (m_pty.hasExited(status)) {
            m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        if (m_status >= 0 && m_ended) {
            QCoreApplication::exit(m_status);
        }
    }

    vt::PseudoTerminal &m_pty;
    vt::TerminalWidget &m_view;
    QSocketNotifier m_reading;
    QSocketNotifier m_writing;
    QTimer m_patience;
    QByteArray m_buffer;
    bool m_clipboard;
    bool m_ended = false;
    int m_status = -1;
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
    qputenv("TERM", "xterm-256color");
    qunsetenv("COLUMNS");
    qunsetenv("LINES");

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

    vt::PseudoTerminal::Command start;
    start.program = command.constFirst().toStdString();
    for (const QString &each : command.sliced(1)) {
        start.arguments.push_back(each.toStdString());
    }
    vt::PseudoTerminal pty;
    int error = pty.open(view.columns(), view.rows());
    error = error != 0 ? error : pty.spawn(start);
    if (error != 0) {
        std::fprintf(stderr, "vt-window: %s: %s\n", start.program.c_str(), std::strerror(error));
        return 127;
    }
    pty.readAhead();
    Host host(pty, view, parser.isSet(clipboard));
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
