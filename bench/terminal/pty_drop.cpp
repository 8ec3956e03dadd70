// pty-drop [--size COLSxROWS] -- COMMAND...: runs a command on a pseudo terminal and drops what it writes, as fast as
// it can be read. What a terminal is measured against.

#include "TerminalEmulator/PseudoTerminal.h"

#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/wait.h>
#include <vector>

int main(int argc, char **argv)
{
    int columns = 120;
    int rows = 40;
    int at = 1;
    if (at + 1 < argc && std::strcmp(argv[at], "--size") == 0) {
        std::sscanf(argv[at + 1], "%dx%d", &columns, &rows);
        at += 2;
    }
    if (at + 1 >= argc || std::strcmp(argv[at], "--") != 0) {
        std::fputs("usage: pty-drop [--size COLSxROWS] -- COMMAND...\n", stderr);
        return 2;
    }
    vt::PseudoTerminal::Command command;
    command.program = argv[at + 1];
    command.arguments.assign(argv + at + 2, argv + argc);
    vt::PseudoTerminal pty;
    if (pty.open(columns, rows) != 0 || pty.spawn(command) != 0) {
        std::perror(argv[at + 1]);
        return 127;
    }
    std::vector<char> buffer(1 << 16);
    ssize_t count = -1;
    while (count != 0) {
        struct pollfd watched = {pty.master(), POLLIN, 0};
        ::poll(&watched, 1, -1);
        do {
            count = pty.read(buffer.data(), buffer.size());
        } while (count > 0);
    }
    int status = 0;
    while (!pty.hasExited(status)) {
        ::poll(nullptr, 0, 1);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
