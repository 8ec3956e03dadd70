#!/usr/bin/env python3
"""Compares the packages that ./dev installs with those that docs/dependencies.md gives reasons for.

usage: packages.py | packages.py --self-test
"""
import re, sys
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]


def of_driver(text):
    """Rows 'package | reason' of the table in ./dev, with the group that a line '# group' begins."""
    table = text[text.index("<<'TABLE'\n") + len("<<'TABLE'\n"):text.index("\nTABLE\n")]
    group, found = "", {}
    for line in table.splitlines():
        if line.startswith("# "):
            group = line[2:]
        else:
            found[line.split("|")[0].strip()] = group
    return found


def of_document(text):
    """Rows '| `package` | reason |' below a heading '## Group'; several packages may share a row."""
    group, found = "", {}
    for line in text.splitlines():
        if heading := re.match(r"## (\w+)", line):
            group = heading[1].lower()
        elif row := re.match(r"\| *(`[^|]*`) *\| *[^|\s]", line):
            found.update({name: group for name in re.findall(r"`([^`]+)`", row[1])})
    return found


def faults(driver, document):
    wrong = [f"{name} ({driver[name]}): in ./dev, not in docs/dependencies.md" for name in driver.keys() - document]
    wrong += [f"{name} ({document[name]}): in docs/dependencies.md, not in ./dev" for name in document.keys() - driver]
    wrong += [f"{name}: {driver[name]} in ./dev, {document[name]} in docs/dependencies.md"
              for name in driver.keys() & document if driver[name] != document[name]]
    return sorted(wrong)


def self_test():
    driver = of_driver("cat <<'TABLE'\n# build\ncmake | builds\nqt | all\n# test\nxvfb | x\nold | y\nTABLE\n")
    document = of_document("# Title\n## Build\n| Package | Why |\n|---|---|\n| `cmake`, `new` | builds |\n| `xvfb` | x |\n"
                           "## Test\n| `old` | y |\n| `qt` | |\n")
    told = faults(driver, document)
    expected = ["new (build): in docs/dependencies.md, not in ./dev", "qt (build): in ./dev, not in docs/dependencies.md",
                "xvfb: test in ./dev, build in docs/dependencies.md"]
    print("told" if told == expected else f"expected {expected}, told {told}")
    return 0 if told == expected else 1


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    driver = of_driver((TOP / "dev").read_text())
    wrong = faults(driver, of_document((TOP / "docs/dependencies.md").read_text()))
    print("\n".join(wrong) or f"{len(driver)} packages")
    return 1 if wrong or not driver else 0


sys.exit(main(sys.argv[1:]))
