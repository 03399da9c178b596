#!/usr/bin/env python3
"""The key-press half of scripts/bench-triggers.

    bench_triggers.py keys LOG ROUNDS
        Presses Alt+O through XTEST ROUNDS times, each time waiting for the
        program's next "[hot key] overlay shown in" line in LOG, then presses
        it again to hide the overlay. Prints, as JSON, the milliseconds from
        the moment the key press left this process to the monotonic stamp of
        that line (the first frame swapped after the show).

Standard library only: libX11 and libXtst through ctypes.
"""

import ctypes
import json
import re
import sys
import time

LINE = re.compile(r"^\s*([\d.]+) \S+: \[hot key\] overlay shown in")


def stamps(path):
    found = []
    with open(path, encoding="utf-8", errors="replace") as handle:
        for line in handle:
            match = LINE.match(line)
            if match:
                found.append(float(match.group(1)))
    return found


def main():
    _, command, log, rounds = sys.argv
    assert command == "keys"
    x = ctypes.CDLL("libX11.so.6")
    xtst = ctypes.CDLL("libXtst.so.6")
    x.XOpenDisplay.restype = ctypes.c_void_p
    x.XKeysymToKeycode.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
    x.XFlush.argtypes = [ctypes.c_void_p]
    xtst.XTestFakeKeyEvent.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.c_int, ctypes.c_ulong]
    display = x.XOpenDisplay(None)
    alt, o = x.XKeysymToKeycode(display, 0xFFE9), x.XKeysymToKeycode(display, 0x6F)

    def press():
        for code, down in ((alt, 1), (o, 1), (o, 0), (alt, 0)):
            xtst.XTestFakeKeyEvent(display, code, down, 0)
        at = time.monotonic()
        x.XFlush(display)
        return at

    latencies = []
    for _ in range(int(rounds)):
        before = len(stamps(log))
        at = press()
        deadline = time.monotonic() + 10
        while len(stamps(log)) <= before and time.monotonic() < deadline:
            time.sleep(0.005)
        shown = stamps(log)
        if len(shown) > before:
            latencies.append((shown[before] - at) * 1000)
        time.sleep(0.4)
        press()  # hide again
        time.sleep(0.6)
    print(json.dumps({"ms": latencies}))


if __name__ == "__main__":
    main()
