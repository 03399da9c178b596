#!/usr/bin/env python3
"""Adds to a fuzz target's repository corpus the fewest inputs that cover what
its working corpus reached.

    scripts/fuzz_minimize.py TARGET [LIMIT]

After `scripts/fuzz` grew build/fuzz/work/TARGET/, this keeps every file in
fuzz/corpus/TARGET/ (the hand-made seeds and kept crash inputs) and adds, as
fuzz/corpus/TARGET/found-<hash>, a greedy set cover of the coverage edges the
working corpus has beyond them. libFuzzer's own -merge=1 keeps every input
that brought anything new in the order it happened to read them, which for a
long run means hundreds of files. The cover takes the input that adds the
most edges first and stops after LIMIT inputs (default 40), which keeps the
repository small and most of the coverage; the rest stays reachable from it
in a few seconds of fuzzing. Standard library only.
"""

import hashlib
import os
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def features(program, path, scratch):
    """The edge features of one input, from a libFuzzer merge control file."""
    inputs = os.path.join(scratch, "in")
    output = os.path.join(scratch, "out")
    control = os.path.join(scratch, "control")
    for folder in (inputs, output):
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
    if os.path.exists(control):
        os.remove(control)
    shutil.copy(path, os.path.join(inputs, "input"))
    subprocess.run([program, "-merge=1", "-use_counters=0", "-use_value_profile=0", "-use_cmp=0",
                    f"-merge_control_file={control}", output, inputs],
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    found = set()
    if os.path.exists(control):
        with open(control, encoding="utf-8", errors="replace") as lines:
            for line in lines:
                parts = line.split()
                if parts and parts[0] == "FT":
                    found.update(parts[2:])
    return found


def main(argv):
    if len(argv) not in (2, 3):
        print(__doc__, file=sys.stderr)
        return 2
    target = argv[1]
    limit = int(argv[2]) if len(argv) == 3 else 40
    program = os.path.join(ROOT, "build/fuzz/fuzz", f"orrery_fuzz_{target}")
    corpus = os.path.join(ROOT, "fuzz/corpus", target)
    work = os.path.join(ROOT, "build/fuzz/work", target)
    if not os.access(program, os.X_OK) or not os.path.isdir(work):
        print(f"build and run the target first: scripts/fuzz 600 {target}", file=sys.stderr)
        return 2

    with tempfile.TemporaryDirectory() as scratch:
        # libFuzzer's merge first, to drop the inputs that add nothing at all.
        merged = os.path.join(scratch, "merged")
        os.makedirs(merged)
        subprocess.run([program, "-merge=1", "-use_counters=0", "-use_cmp=0", merged, work],
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)

        covered = set()
        for name in sorted(os.listdir(corpus)):
            covered |= features(program, os.path.join(corpus, name), scratch)
        seeds = len(covered)
        candidates = {}
        for name in os.listdir(merged):
            path = os.path.join(merged, name)
            candidates[path] = features(program, path, scratch) - covered

        added = []
        while True:
            best = max(candidates, key=lambda p: (len(candidates[p] - covered), -os.path.getsize(p)),
                       default=None)
            if best is None or not candidates[best] - covered or len(added) == limit:
                break
            covered |= candidates.pop(best)
            with open(best, "rb") as data:
                digest = hashlib.sha1(data.read()).hexdigest()[:12]
            shutil.copy(best, os.path.join(corpus, f"found-{digest}"))
            added.append(best)
        everything = covered.union(*candidates.values())
    print(f"{target}: seeds cover {seeds} features; added {len(added)} inputs, "
          f"now {len(covered)} of the {len(everything)} the working corpus reaches")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
