#!/usr/bin/env python3
"""run.py [REPORT [PATTERN]]: checks the terminal it runs in, a case at a time, and ends with status 1 if one fails.
Each case starts on a reset terminal of 80x25. The last screen tells the result; REPORT gets a line for each case.

A case is a name, bytes to send, and what shall be then: "asks" pairs a query with its answer (a pattern, if it begins
with "(?"), "at" is the cursor, "shows" the text of rows from column "first", "kernel" the pseudo terminal's size."""
import importlib
import re
import sys

from tty_session import Session, raw, shown

TOPICS = ("motion", "margins", "editing", "erasing", "rectangles", "printing", "modes", "reports", "settings", "colors",
          "windows", "resets", "controls")
RESET = r"\e[65;1\x22p\e[?1049l\ec\e[8;25;80t\e[>0;1T\e[>2;3t\e[1t\e[3;0;0t"


def differences(session, case):
    """What is not as it should be, as text; nothing if the case is right."""
    for query, wanted in case.get("asks", []):
        answer = shown(session.ask(raw(query)))
        if not re.fullmatch(wanted if wanted.startswith("(?") else re.escape(wanted), answer):
            yield f"{query} is answered {answer!r}, not {wanted!r}"
    if "at" in case:
        answer = session.ask(b"\x1b[6n").decode()
        if answer != f"\x1b[{case['at']}R":
            yield f"cursor at {answer[2:-1]}, not {case['at']}"
    for row, wanted in case.get("shows", {}).items():
        first = case.get("first", 1)
        answer = session.cells(row, first, len(wanted))
        if answer != wanted:
            yield f"row {row} shows {answer!r}, not {wanted!r}"
    if "kernel" in case and session.kernel_size() != case["kernel"]:
        yield f"the pseudo terminal is {session.kernel_size()}, not {case['kernel']}"


def main():
    report = open(sys.argv[1], "w") if len(sys.argv) > 1 else None
    pattern = re.compile(sys.argv[2]) if len(sys.argv) > 2 else None
    session = Session()
    failures = []
    count = 0
    try:
        for topic in TOPICS:
            for name, feed, case in importlib.import_module("topic_" + topic).CASES:
                title = f"{topic}: {name}"
                if pattern and not pattern.search(title):
                    continue
                count += 1
                session.ask(raw(RESET))
                session.send(raw(feed))
                wrong = list(differences(session, case))
                failures += [f"{title}: {each}" for each in wrong]
                if report:
                    report.write(("not ok " if wrong else "ok ") + title + "".join("\n    " +
                    each for each in wrong) + "\n")
                    report.flush()
        session.ask(raw(RESET))
    finally:
        session.close()
    for failure in failures[-22:]:
        print(failure)
    print(f"{count} cases, {len(failures)} failures")
    return 1 if failures or count == 0 else 0


sys.exit(main())
