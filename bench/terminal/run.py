#!/usr/bin/env python3
"""run.py BUILD [ROUNDS [MIB]]: the engine against libvterm and libvte on the eleven payloads, 120x40 with 10,000 rows of
scrollback. In each round every program takes every payload once, in turn; the medians are compared. libvte needs a
display: run it under xvfb-run."""
import os
import statistics
import subprocess
import sys
import tempfile

build = os.path.join(sys.argv[1], "bench")
rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
mib = sys.argv[3] if len(sys.argv) > 3 else "8"
here = os.path.dirname(os.path.abspath(__file__))
feeders = [name for name in ("feed-engine", "feed-libvterm", "feed-libvte") if os.path.exists(f"{build}/{name}")]

with tempfile.TemporaryDirectory() as folder:
    subprocess.run([sys.executable, f"{here}/payloads.py", folder, mib], check=True)
    kinds = sorted(os.listdir(folder))
    seconds = {}
    for _ in range(rounds):
        for kind in kinds:
            for feeder in feeders:
                out = subprocess.run([f"{build}/{feeder}", f"{folder}/{kind}", "120", "40", "10000"], check=True,
                                     capture_output=True, text=True).stdout
                seconds.setdefault((feeder, kind), []).append(float(out.split()[-1]))
    sizes = {kind: os.path.getsize(f"{folder}/{kind}") / 1e6 for kind in kinds}

median = {key: statistics.median(values) for key, values in seconds.items()}
others = feeders[1:]
print(f"{'MB/s':12}" + "".join(f"{feeder[5:]:>12}" for feeder in feeders) +
      "".join(f"{'x ' + other[5:]:>12}" for other in others))
for kind in kinds:
    own = median["feed-engine", kind]
    print(f"{kind:12}" + "".join(f"{sizes[kind] / median[feeder, kind]:12.1f}" for feeder in feeders) +
          "".join(f"{median[other, kind] / own:12.2f}" for other in others))
for other in others:
    ratios = [median[other, kind] / median["feed-engine", kind] for kind in kinds]
    print(f"geometric mean over {other[5:]}: {statistics.geometric_mean(ratios):.2f}, least {min(ratios):.2f}")
