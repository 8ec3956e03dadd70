#!/usr/bin/env python3
"""payloads.py FOLDER [MIB]: writes the eleven kinds of terminal output that the engine is measured with, each at least
MIB (default 4) mebibytes, for a terminal of 120x40. The same bytes each time: the random numbers are seeded."""
import os
import random
import sys

COLUMNS, ROWS = 120, 40
WORDS = ("error warning info debug connection accepted from port session opened for user root closed service started "
         "stopped kernel memory disk read write timeout request response status active failed reload config update "
         "package installed removed cache index table query transaction commit rollback worker thread queue").split()
random.seed(20)


def words(count):
    return " ".join(random.choice(WORDS) for _ in range(count))


def plain():
    return f"2026-11-{random.randint(1, 30):02} 12:{random.randint(0, 59):02}:07 host-{random.randint(1, 9)} " \
           f"sshd[{random.randint(100, 99999)}]: {words(random.randint(4, 11))}\r\n"


def sgr():
    color = random.randint(31, 37)
    return f"\x1b[90m12:{random.randint(0, 59):02}:07\x1b[0m \x1b[1;{color}m{random.choice(WORDS).upper()}\x1b[0m " \
           f"\x1b[38;5;{random.randint(16, 231)}m{words(2)}\x1b[39m {words(4)} \x1b[4m{random.choice(WORDS)}\x1b[24m " \
           f"\x1b[38;2;{random.randint(0, 7) * 32};128;64m{words(2)}\x1b[m\r\n"


def addressed():
    return "".join(f"\x1b[{random.randint(1, ROWS)};{random.randint(1, COLUMNS)}H\x1b[{random.randint(40, 47)}m"
                   f"{random.choice('abcdefgh#*')}" for _ in range(40))


def short():
    return random.choice(WORDS)[:random.randint(1, 8)] + "\r\n"


def region():
    return "\x1b[5;35r\x1b[35;1H" + "".join(f"\r\n{words(5)}" for _ in range(60)) + "\x1b[r"


def boxes():
    width = random.randint(20, 110)
    line = "".join(random.choice(["é", "ü", "a", "n", "ß", "o", " ", "r", "ç", "t"]) for _ in range(width - 2))
    return "┌" + "─" * (width - 2) + "┐\r\n│" + line + "│\r\n└" + "─" * (width - 2) + "┘\r\n"


def cjk():
    return "".join(chr(random.randint(0x4e00, 0x9fa0)) for _ in range(random.randint(10, 55))) + "\r\n"


def emoji():
    pool = ["😀", "🚀", "👩\u200d💻", "❤\ufe0f", "🇩🇪", "👍🏽", "e\u0301", "a\u0308", "✓", " ok ", "👨\u200d👩\u200d👧"]
    return "".join(random.choice(pool) for _ in range(random.randint(8, 40))) + "\r\n"


def motion():
    moves = ["\x1b[A", "\x1b[B", "\x1b[3C", "\x1b[2D", "\x1b[H", "\x1b[12G", "\x1b[7d", "\r", "\b", "\x1b7", "\x1b8",
             "\x1b[5;5H", "\t", "\x1b[K"]
    return "".join(random.choice(moves) + (random.choice("xyz") if random.random() < 0.3 else "") for _ in range(100))


def frame():
    out = ["\x1b[H"]
    for row in range(ROWS):
        style = random.choice(["\x1b[m", "\x1b[7m", "\x1b[1;32m", "\x1b[44;37m"])
        text = f"{random.randint(1, 99999):6} root {random.randint(0, 99):3}.{random.randint(0, 9)} {words(9)}"
        out.append(f"{style}{text[:COLUMNS]}\x1b[K" + ("\r\n" if row < ROWS - 1 else ""))
    return "".join(out)


def wrapped():
    return words(1200).replace(" ", random.choice([" ", "", "_"])) + "\r\n"


KINDS = {"plain": plain, "sgr": sgr, "addressed": addressed, "short": short, "region": region, "boxes": boxes,
         "cjk": cjk, "emoji": emoji, "motion": motion, "frame": frame, "wrapped": wrapped}


def main():
    folder = sys.argv[1]
    size = int(float(sys.argv[2]) * 1048576) if len(sys.argv) > 2 else 4 << 20
    os.makedirs(folder, exist_ok=True)
    for name, make in KINDS.items():
        # A part that repeats is enough: what the terminals do with it does not depend on its having come before.
        part, length = [], 0
        while length < min(size, 1 << 20):
            piece = make().encode()
            part.append(piece)
            length += len(piece)
        part = b"".join(part)
        with open(os.path.join(folder, name), "wb") as out:
            for _ in range(max(1, -(-size // len(part)))):
                out.write(part)


main()
