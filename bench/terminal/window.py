#!/usr/bin/env python3
"""window.py BUILD [ROUNDS [MIB]]: `cat` of a file in a window of 120x40 against a program that only reads the same pseudo
terminal, and against xfce4-terminal where it is installed; and how long a key press takes to reach a program while the
window takes such a flood. Payloads are repeated to MIB mebibytes (64). In each round every terminal takes the payload
once, in turn; the medians are compared, kind by kind. Needs a display: run it under xvfb-run with a screen that holds
the window."""
import os
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

build = os.path.abspath(sys.argv[1])
rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
mib = int(sys.argv[3]) if len(sys.argv) > 3 else 64
here = os.path.dirname(os.path.abspath(__file__))
window = [f"{build}/src/TerminalEmulator/Tools/vt-window", "--size", "120x40", "--"]
KINDS = ("plain", "sgr", "boxes", "cjk", "frame")
# Runs inside: waits for its window to be there, and writes the seconds of cat into a file.
SCRIPT = 'sleep 1; a=$EPOCHREALTIME; cat "$1"; b=$EPOCHREALTIME; echo "$a $b" >"$2.part"; mv "$2.part" "$2"'
# Writes the file again and again while it notes when keys arrive.
ANSWER = r"""
import os, subprocess, sys, termios, time, tty
tty.setraw(0)
flood = subprocess.Popen(["sh", "-c", 'while :; do cat "$0"; done', sys.argv[1]], stdin=subprocess.DEVNULL)
with open(sys.argv[2], "w", buffering=1) as out:
    while (key := os.read(0, 1)) != b"q":
        out.write(f"{time.monotonic()}\n")
flood.kill()
"""

def terminals(folder):
    result = {"drop": [f"{build}/bench/pty-drop", "--"], "vt-window": window}
    if shutil.which("xfce4-terminal"):
        result["xfce4-terminal"] = ["dbus-run-session", "--", "xfce4-terminal", "--disable-server", "--geometry=120x40", "-x"]
    return result


def rate(command, payload, folder):
    told = os.path.join(folder, "told")
    # In a session of its own, which is ended as a whole: a terminal may bring a message bus along.
    child = subprocess.Popen(command + ["bash", "-c", SCRIPT, "sh", payload, told], stderr=subprocess.DEVNULL,
                             start_new_session=True)
    deadline = time.monotonic() + 300
    while not os.path.exists(told) and time.monotonic() < deadline:
        time.sleep(0.05)
    begin, end = map(float, open(told).read().split())
    os.remove(told)
    os.killpg(child.pid, signal.SIGTERM)
    child.wait()
    return os.path.getsize(payload) / 1e6 / (end - begin)


def latencies(payload, folder, count=60):
    """Milliseconds from just before xdotool is started until the program has the key: an upper bound."""
    told = os.path.join(folder, "keys")
    child = subprocess.Popen(window + [sys.executable, "-c", ANSWER, payload, told], stderr=subprocess.DEVNULL)
    time.sleep(2.5)
    found = subprocess.run(["xdotool", "search", "--pid", str(child.pid)], capture_output=True, text=True).stdout.split()
    subprocess.run(["xdotool", "windowfocus", found[-1]], check=True)
    time.sleep(0.5)
    times = []
    for _ in range(count):
        before, seen = time.monotonic(), len(open(told).readlines())
        subprocess.run(["xdotool", "key", "a"], check=True)
        while len(lines := open(told).readlines()) == seen and time.monotonic() < before + 5:
            time.sleep(0.001)
        times.append((float(lines[-1]) - before) * 1e3 if len(lines) > seen else 5000)
        time.sleep(0.05)
    subprocess.run(["xdotool", "key", "q"])
    child.terminate()
    child.wait()
    return times


with tempfile.TemporaryDirectory() as folder:
    subprocess.run([sys.executable, f"{here}/payloads.py", folder, "4"], check=True)
    payloads = {}
    for kind in KINDS:
        block = open(f"{folder}/{kind}", "rb").read()
        payloads[kind] = f"{folder}/{kind}.big"
        with open(payloads[kind], "wb") as out:
            while out.tell() < mib << 20:
                out.write(block)
    programs = terminals(folder)
    print(f"{'MB/s':10}" + "".join(f"{name:>16}" for name in programs) + f"{'of drop':>10}{'x xfce4':>10}", flush=True)
    for kind in KINDS:
        rates = {name: [] for name in programs}
        for _ in range(rounds):
            for name, command in programs.items():
                rates[name].append(rate(command, payloads[kind], folder))
        median = {name: statistics.median(rates[name]) for name in programs}
        print(f"{kind:10}" + "".join(f"{median[name]:16.1f}" for name in programs) +
              f"{median['vt-window'] / median['drop']:10.2f}" +
              (f"{median['vt-window'] / median['xfce4-terminal']:10.1f}" if "xfce4-terminal" in programs else ""), flush=True)
    for kind in KINDS:
        times = sorted(latencies(payloads[kind], folder))
        print(f"key while {kind}: median {times[len(times) // 2]:.1f} ms, 95 % {times[len(times) * 95 // 100]:.1f} ms, "
              f"most {times[-1]:.1f} ms", flush=True)
