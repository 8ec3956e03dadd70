// vt-host [--size COLSxROWS] [--dump] [--record FILE] -- COMMAND...
//
// Runs a command on a pseudo terminal against the engine, without a window: its queries are answered, and size
// changes it asks for happen. Ends with the command's status, or 128 and the number of the signal that ended it.

#include "TerminalEmulator/Engine/Terminal.h"
#include "TerminalEmulator/PseudoTerminal.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <poll.h>
#include <string>
#include <sys/wait.h>

namespace
{

struct Arguments {
    int columns = 80;
    int rows = 24;
    bool dump = false;
    std::string record;
    vt::PseudoTerminal::Command command;
};

bool parse(int argc, char **argv, Arguments &out)
{
    int at = 1;
    for (; at < argc && std::strcmp(argv[at], "--") != 0; ++at) {
        const std::string option = argv[at];
        if (option == "--dump") {
            out.dump = true;
        } else if (option == "--size" && at + 1 < argc) {
            if (std::sscanf(argv[++at], "%dx%d", &out.columns, &out.rows) != 2 || out.columns < 1 || out.rows < 1) {
                return false;
            }
        } else if (option == "--record" && at + 1 < argc) {
            out.record = argv[++at];
        } else {
            return false;
        }
    }
    if (at + 1 >= argc) {
        return false;
    }
    out.command.program = argv[at + 1];
    out.command.arguments.assign(argv + at + 2, argv + argc);
    return true;
}

/// Feeds everything that is there; false at the end of the stream.
bool pump(vt::PseudoTerminal &pty, vt::Terminal &terminal, std::ofstream &record)
{
    char buffer[65536];
    for (int block = 0; block < 16; ++block) {
        const ssize_t count = pty.read(buffer, sizeof buffer);
        if (count <= 0) {
            return count < 0;
        }
        const std::string_view bytes(buffer, static_cast<size_t>(count));
        record << bytes;
        terminal.feed(bytes);
        for (const vt::Event &event : terminal.takeEvents()) {
            if (event.kind == vt::Event::Kind::Resized) {
                pty.setSize(terminal.columns(), terminal.rows());
            }
        }
        if (terminal.hasReplies()) {
            pty.write(terminal.takeReplies());
        }
    }
    return true;
}

int run(vt::PseudoTerminal &pty, vt::Terminal &terminal, std::ofstream &record)
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::seconds Grace(1); // for what a process left behind goes on writing
    int status = 0;
    bool exited = false;
    int quiet = 0;
    Clock::time_point end;
    while (true) {
        struct pollfd watched = {pty.master(), static_cast<short>(POLLIN | (pty.hasPending() ? POLLOUT : 0)), 0};
        const int ready = ::poll(&watched, 1, exited ? 20 : 100);
        pty.flush();
        const bool open = ready <= 0 || pump(pty, terminal, record);
        if (!exited && pty.hasExited(status)) {
            exited = true;
            end = Clock::now() + Grace;
        }
        // Somebody the command left behind may hold the far side; what the command wrote has been read by then.
        quiet = exited && ready == 0 ? quiet + 1 : 0;
        if (exited && (!open || quiet > 2 || Clock::now() >= end)) {
            return status;
        }
        if (!open) {
            ::usleep(2000);
        }
    }
}

void dump(const vt::Terminal &terminal)
{
    std::string out;
    size_t used = 0;
    vt::Line line;
    for (int row = 0; row < terminal.rows(); ++row) {
        terminal.line(terminal.screenTop() + row, line);
        for (const vt::Cell &cell : line.cells) {
            terminal.appendText(cell, out);
        }
        while (!out.empty() && out.back() == ' ') {
            out.pop_back();
        }
        used = !out.empty() && out.back() != '\n' ? out.size() + 1 : used;
        out += '\n';
    }
    out.resize(used);
    std::fwrite(out.data(), 1, out.size(), stdout);
}

} // namespace

int main(int argc, char **argv)
{
    Arguments arguments;
    if (!parse(argc, argv, arguments)) {
        std::fputs("usage: vt-host [--size COLSxROWS] [--dump] [--record FILE] -- COMMAND...\n", stderr);
        return 2;
    }
    ::setenv("TERM", "xterm-256color", 1);
    ::unsetenv("COLUMNS");
    ::unsetenv("LINES");
    vt::Options options;
    options.columns = arguments.columns;
    options.rows = arguments.rows;
    options.allowResize = true;
    options.allowClipboardRead = true;
    options.allowClipboardWrite = true;
    options.allowTitleReports = true;
    vt::Terminal terminal(options);
    vt::PseudoTerminal pty;
    std::ofstream record;
    if (!arguments.record.empty()) {
        record.open(arguments.record, std::ios::binary);
    }
    int error = pty.open(terminal.columns(), terminal.rows());
    error = error != 0 ? error : pty.spawn(arguments.command);
    if (error != 0) {
        std::fprintf(stderr, "vt-host: %s: %s\n", arguments.command.program.c_str(), std::strerror(error));
        return 127;
    }
    const int status = run(pty, terminal, record);
    if (arguments.dump) {
        dump(terminal);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
