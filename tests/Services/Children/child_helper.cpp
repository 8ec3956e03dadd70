// Plays the children that test_child_process starts. child_helper MODE [ARGUMENT]

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace
{

void spew(int descriptor, size_t bytes)
{
    const std::string block(65536, descriptor == 1 ? 'o' : 'e');
    while (bytes > 0) {
        const ssize_t written = ::write(descriptor, block.data(), bytes < block.size() ? bytes : block.size());
        if (written <= 0) {
            std::exit(9);
        }
        bytes -= static_cast<size_t>(written);
    }
}

} // namespace

int main(int argc, char **argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    const std::string argument = argc > 2 ? argv[2] : "";
    if (mode == "arguments") { // each between brackets, so that joining or splitting shows
        for (int i = 2; i < argc; ++i) {
            std::printf("[%s]", argv[i]);
        }
        return 0;
    }
    if (mode == "exit") {
        std::fputs("to error", stderr);
        return std::atoi(argument.c_str());
    }
    if (mode == "crash") {
        std::signal(SIGSEGV, SIG_DFL);
        ::raise(SIGSEGV);
    }
    if (mode == "spew") { // both streams in turns: a reader that drains only one of them blocks us
        const size_t bytes = std::strtoull(argument.c_str(), nullptr, 10);
        for (size_t done = 0; done < bytes; done += 65536) {
            spew(1, 65536);
            spew(2, 65536);
        }
        return 0;
    }
    if (mode == "cat") {
        char buffer[4096];
        for (ssize_t n = 0; (n = ::read(0, buffer, sizeof(buffer))) > 0;) {
            if (::write(1, buffer, static_cast<size_t>(n)) != n) {
                return 9;
            }
        }
        return 0;
    }
    if (mode == "sleep") {
        ::write(1, "begun", 5);
        ::sleep(60);
        return 0;
    }
    if (mode == "stubborn") { // only SIGKILL ends it
        std::signal(SIGTERM, SIG_IGN);
        ::write(1, "begun", 5);
        for (;;) {
            ::sleep(60);
        }
    }
    if (mode == "heir") { // ends at once and leaves a grandchild that holds both pipes open
        if (::fork() == 0) {
            ::sleep(5);
            return 0;
        }
        ::write(1, "parent", 6);
        return 0;
    }
    if (mode == "session") { // "leader" when it leads a session of its own and has no terminal
        const int terminal = ::open("/dev/tty", O_RDWR);
        std::fputs(::getsid(0) == ::getpid() && ::getpgrp() == ::getpid() && terminal < 0 ? "leader" : "follower",
                   stdout);
        return 0;
    }
    return 8;
}
