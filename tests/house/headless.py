#!/usr/bin/env python3
"""Proves with ldd that no library of the GUI crept into the programs that must do without.

usage: headless.py LIST             LIST names one program a line, after the library pattern that it must not load
       headless.py --self-test LIBRARY...   each of these, known to load Qt's GUI, must be told
"""
import re, subprocess, sys

GUI = r"libQt6(Gui|Widgets|OpenGL|OpenGLWidgets|Charts|Svg|SvgWidgets|Quick|Qml)\b"


def loaded(program):
    run = subprocess.run(["ldd", program], capture_output=True, text=True)
    if run.returncode:
        sys.exit(f"ldd {program}: {run.stderr.strip() or run.stdout.strip()}")
    return re.findall(r"^\s*(\S+)", run.stdout, re.M)


def faults(program, pattern):
    return [f"{program} loads {library}" for library in loaded(program) if re.match(pattern, library)]


def main(arguments):
    if arguments[:1] == ["--self-test"] and len(arguments) > 1:
        missed = [library for library in arguments[1:] if not faults(library, GUI)]
        print(f"not told: {missed}" if missed else "told")
        return 1 if missed else 0
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    told, count = [], 0
    for line in open(arguments[0]):
        kind, program = line.split()
        told += faults(program, {"gui": GUI, "qt": r"libQt6"}[kind])
        count += 1
    print("\n".join(told) or f"{count} programs load what they may")
    return 1 if told or not count else 0


sys.exit(main(sys.argv[1:]))
