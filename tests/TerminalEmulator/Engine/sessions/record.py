#!/usr/bin/env python3
"""record.py FOLDER [NAME...]: records what real programs write to a terminal of 80x24, one NAME.raw each, for test_sessions.

A program's keys are sent one group at a time, each after the output has been quiet for a while; its queries are answered
as the engine answers them. What is recorded depends on the machine, so the expected grids (NAME.txt) belong to the
recordings beside them: record anew and check the new grids by eye, or against another terminal."""
import fcntl
import os
import pty
import re
import select
import signal
import struct
import sys
import tempfile
import termios
import time

ANSWERS = [(rb"\x1b\[c", b"\x1b[?65;1;2;6;9;15;16;17;18;21;22;28;29c"), (rb"\x1b\[>c", b"\x1b[>64;390;0c"),
           (rb"\x1b\[6n", b"\x1b[1;1R"), (rb"\x1b\[5n", b"\x1b[0n")]
TEXT = "".join(f"line {n}: the quick brown fox jumps over the lazy dog, naïve café 漢字 {n * n}\n" for n in range(1, 61))

# Only a process of its own, so that nothing of the machine gets in.
HTOP = (["sh", "-c", "sleep 60 & exec htop -d 5 -p $!"], [b"", b"t"])
SESSIONS = {
    "vim": (["vim", "-u", "NONE", "-N", "--cmd", "syntax on", "sample.c"],
            [b"4jdd", b"ofor (;;) { break; } // \xe6\xbc\xa2\x1b", b":set number\r", b":vsplit\r", b"/return\r"]),
    "less": (["less", "text.txt"], [b" ", b"/lazy\r", b"G", b"bb"]),
    "htop": HTOP,
    "tmux": (["tmux", "-L", "record", "-f", "/dev/null", "new-session", "sh"],
             [b"PS1='$ '; clear; seq 1 40\r", b"\x02%", b"PS1='> '; clear; ls --color=always\r", b"\x02\"", b"echo third\r"]),
    "mc": (["mc", "--nosubshell", "-u"], [b"", b"\x1b[B\x1b[B", b"\x1b[20~"]),
    "nano": (["nano", "-I", "text.txt"], [b"inserted ", b"\x1b[B\x1b[B\x0b", b"\x17fox\r"]),
    "ls": (["ls", "--color=always", "-la", "colors"], []),
    "compiler": (["clang++-19", "-fcolor-diagnostics", "-fsyntax-only", "broken.cpp"], []),
    # Needs root and a mirror.
    "apt": (["apt", "-o", "Dpkg::Progress-Fancy=1", "-y", "install", "--reinstall", "less"], []),
}


def prepare(folder):
    def write(name, text):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as out:
            out.write(text)
    write("text.txt", TEXT)
    write("sample.c", "#include <stdio.h>\n\nint main(void)\n{\n    int x = 1; // one\n    puts(\"hello\");\n"
                      "    if (x > 0) {\n        return x;\n    }\n    return 0;\n}\n")
    write("broken.cpp", "#include <vector>\nint main()\n{\n    std::vector<int> v = \"text\";\n    return v.sizes();\n}\n")
    os.mkdir(os.path.join(folder, "colors"))
    for name in ("archive.tar.gz", "image.png", "script.sh", "überlänge.txt", "漢字.txt"):
        write(os.path.join("colors", name), "x")
        os.utime(os.path.join(folder, "colors", name), (1700000000, 1700000000))
    os.chmod(os.path.join(folder, "colors", "script.sh"), 0o755)
    os.mkdir(os.path.join(folder, "colors", "folder"))
    os.symlink("nowhere", os.path.join(folder, "colors", "broken"))


def record(argv, keys, folder):
    child, master = pty.fork()
    if child == 0:
        os.chdir(folder)
        os.environ.update(TERM="xterm-256color", LANG="C.UTF-8", LC_ALL="C.UTF-8", HOME=folder, SHELL="/bin/sh")
        time.sleep(0.1)
        os.execvp(argv[0], argv)
    fcntl.ioctl(master, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
    data, keys, quiet = b"", list(keys), 0
    while quiet < (12 if argv[0] != "apt" else 200):
        if not select.select([master], [], [], 0.05)[0]:
            quiet += 1
            if quiet == 8 and keys:
                os.write(master, keys.pop(0))
                quiet = 0
            continue
        quiet = 0 if argv[-1:] != HTOP[0][-1:] else quiet
        try:
            block = os.read(master, 65536)
        except OSError:
            break
        for pattern, answer in ANSWERS:
            for _ in re.finditer(pattern, block):
                os.write(master, answer)
        data += block
    # Names of the machine have no place in the tree.
    data = re.sub(rb"https?://[^ /]+/", b"http://mirror.example/", data)
    data = re.sub(rb"'[\w-]+[.](sources|list)[.][\w-]+'", b"'old.list.disabled'", data).replace(os.uname().nodename.encode(), b"host")
    data = re.sub(rb"/tmp/tmp\w{8}", b"/home/work", data)
    os.kill(child, signal.SIGKILL)
    os.waitpid(child, 0)
    return data


def main():
    for name, (argv, keys) in SESSIONS.items():
        if sys.argv[2:] and name not in sys.argv[2:]:
            continue
        with tempfile.TemporaryDirectory() as folder:
            prepare(folder)
            data = record(argv, keys, folder)
            if name == "tmux":
                os.system("tmux -L record kill-server")
        with open(os.path.join(sys.argv[1], f"{name}.raw"), "wb") as out:
            out.write(data)


main()
