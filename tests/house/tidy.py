#!/usr/bin/env python3
"""Runs clang-tidy over the tree's own sources and remembers which were clean.

usage: tidy.py BUILD_DIRECTORY [FILE...]      (without files: every source of the tree that the build compiles)

A source is looked at again when it, a header of the tree that it reaches, its compile command, .clang-tidy or the
tool itself changed. Only clean results are remembered, in $XDG_CACHE_HOME/tarnwell-tidy, shared by all clones.
Exit status: 0 clean, 1 findings, 2 wrong use.
"""
import concurrent.futures, hashlib, json, os, re, subprocess, sys, time
from pathlib import Path

TOOL = "clang-tidy-19"
TOP = Path(__file__).resolve().parents[2]
CACHE = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "tarnwell-tidy"
KEEP_DAYS = 30
INCLUDE = re.compile(rb'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.M)


def reached(source, seen):
    """The source and every header of the tree that it includes, directly or not, in a stable order."""
    if source in seen:
        return
    seen[source] = text = source.read_bytes()
    for name in INCLUDE.findall(text):
        for folder in (source.parent, TOP / "src", TOP / "tests", TOP / "cmake"):
            header = folder / os.fsdecode(name)
            if header.is_file():
                reached(header.resolve(), seen)
                break


def key_of(source, command, common):
    digest = hashlib.sha256(common)
    digest.update(command.replace(str(TOP), "").encode())
    seen = {}
    reached(source, seen)
    for path, text in seen.items():
        digest.update(os.fsencode(path.relative_to(TOP)) + b"\0" + text + b"\0")
    return digest.hexdigest()


def sources(build):
    """Maps each of the tree's sources that the build compiles to its compile command."""
    tracked = set(subprocess.run(["git", "ls-files", "-z", "*.cpp"], cwd=TOP, check=True, capture_output=True,
                                 text=True).stdout.split("\0"))
    found = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        path = Path(entry["file"]).resolve()
        if path.is_relative_to(TOP) and str(path.relative_to(TOP)) in tracked:
            found.setdefault(path, entry["command"])
    return found


def check(build, source):
    run = subprocess.run([TOOL, "-p", build, "--quiet", source], capture_output=True, text=True, errors="replace")
    noise = re.compile(r"^\d+ warnings? (generated|treated)|^Suppressed |^Use -header-filter")
    lines = [line for line in (run.stdout + run.stderr).splitlines() if line and not noise.match(line)]
    return run.returncode == 0, "\n".join(lines)


def blocks(text):
    """The findings in clang-tidy's output, each with the lines that belong to it."""
    return re.split(r"\n(?=\S[^\n]*: (?:error|warning): )", text)


def main(arguments):
    if not arguments:
        print(__doc__, file=sys.stderr)
        return 2
    build = Path(arguments[0]).resolve()
    commands = sources(build)
    wanted = [Path(name).resolve() for name in arguments[1:]] or sorted(commands)
    for source in wanted:
        if source not in commands:
            print(f"tidy: {source} is not compiled by {build}", file=sys.stderr)
            return 2

    CACHE.mkdir(parents=True, exist_ok=True)
    version = subprocess.run([TOOL, "--version"], check=True, capture_output=True).stdout
    common = version + (TOP / ".clang-tidy").read_bytes()
    keys = {source: key_of(source, commands[source], common) for source in wanted}
    todo = [source for source in wanted if not (CACHE / keys[source]).exists()]
    for source in wanted:
        if source not in todo:
            (CACHE / keys[source]).touch()

    findings, told = 0, set()  # one finding in a header comes from each source that reaches it
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for source, (clean, text) in zip(todo, pool.map(lambda item: check(build, item), todo)):
            if clean:
                (CACHE / keys[source]).touch()
            else:
                findings += 1
                print("\n".join(block for block in blocks(text) if block not in told), flush=True)
                told.update(blocks(text))
    oldest = time.time() - KEEP_DAYS * 86400
    for entry in CACHE.iterdir():
        if entry.stat().st_mtime < oldest:
            entry.unlink(missing_ok=True)
    print(f"clang-tidy: {len(wanted)} sources, {len(wanted) - len(todo)} unchanged since they were clean, "
          f"{findings} with findings")
    return 1 if findings else 0


sys.exit(main(sys.argv[1:]))
