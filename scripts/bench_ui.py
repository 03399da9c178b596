#!/usr/bin/env python3
"""Measurements behind scripts/bench-ui, one sub-command each; every one
prints a JSON object on stdout and never leaves a process behind.

    bench_ui.py tree ROOT COUNT [FOLDER]
        Makes the folders of a user with COUNT desktop entries of distinct
        names, their icons cycling over the full-colour icons of Adwaita;
        with FOLDER, an arrangement whose first item is a folder of the
        first FOLDER apps (the first scan appends the others).
    bench_ui.py mapped CLASS LOG [UNTIL] -- COMMAND...
        Starts COMMAND (its output into LOG) and reports the milliseconds
        from just before the start to the moment a window whose WM_CLASS
        contains CLASS is viewable on the X server; then, once LOG holds
        the text UNTIL when given, ends COMMAND.
    bench_ui.py memory CLASS PAGES LOG -- COMMAND...
        Starts COMMAND and samples its resident memory until it quits. With
        PAGES > 0 it ends COMMAND itself: it waits for the window, presses
        Page_Down PAGES times (xdotool), waits for the list to settle and
        then samples once more.
    bench_ui.py wakeups PID SECONDS
        Context switches of all threads of PID (voluntary and not), the CPU
        time it used over SECONDS, and its resident memory at the end.
    bench_ui.py report RESULTS.jsonl OUTPUT.md
        Writes the section of OUTPUT.md between the bench-ui markers from
        the collected results, leaving the rest of OUTPUT.md as it is.
    bench_ui.py folder-report OUTPUT.md APPS FOLDER PROGRAM LOG...
        Writes the section of OUTPUT.md between the bench-ui-folder markers
        from the "open folder" steps of the --perf-test logs.

Standard library only: the X server is reached through libX11 with ctypes,
so the watch reacts to the server's own events instead of polling it.
"""

import ctypes
import ctypes.util
import json
import os
import re
import select
import signal
import statistics
import subprocess
import sys
import time
import uuid

CREATE_NOTIFY, MAP_NOTIFY = 16, 19
STRUCTURE_NOTIFY_MASK, SUBSTRUCTURE_NOTIFY_MASK = 1 << 17, 1 << 19
IS_VIEWABLE = 2


class WindowAttributes(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int),
                ("border_width", ctypes.c_int), ("depth", ctypes.c_int), ("visual", ctypes.c_void_p),
                ("root", ctypes.c_ulong), ("class_", ctypes.c_int), ("bit_gravity", ctypes.c_int),
                ("win_gravity", ctypes.c_int), ("backing_store", ctypes.c_int),
                ("backing_planes", ctypes.c_ulong), ("backing_pixel", ctypes.c_ulong),
                ("save_under", ctypes.c_int), ("colormap", ctypes.c_ulong), ("map_installed", ctypes.c_int),
                ("map_state", ctypes.c_int), ("all_event_masks", ctypes.c_long),
                ("your_event_mask", ctypes.c_long), ("do_not_propagate_mask", ctypes.c_long),
                ("override_redirect", ctypes.c_int), ("screen", ctypes.c_void_p)]


class ClassHint(ctypes.Structure):
    _fields_ = [("res_name", ctypes.c_void_p), ("res_class", ctypes.c_void_p)]


class Event(ctypes.Structure):
    # The head shared by CreateNotify (parent, window) and MapNotify (event,
    # window); the union is 24 longs long.
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("first", ctypes.c_ulong), ("window", ctypes.c_ulong),
                ("pad", ctypes.c_long * 18)]


class X:
    def __init__(self):
        self.lib = ctypes.CDLL(ctypes.util.find_library("X11") or "libX11.so.6")
        lib = self.lib
        lib.XOpenDisplay.restype = ctypes.c_void_p
        lib.XOpenDisplay.argtypes = [ctypes.c_char_p]
        lib.XDefaultRootWindow.restype = ctypes.c_ulong
        lib.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
        lib.XSelectInput.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_long]
        lib.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
        lib.XPending.argtypes = [ctypes.c_void_p]
        lib.XNextEvent.argtypes = [ctypes.c_void_p, ctypes.POINTER(Event)]
        lib.XConnectionNumber.argtypes = [ctypes.c_void_p]
        lib.XGetWindowAttributes.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(WindowAttributes)]
        lib.XGetClassHint.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(ClassHint)]
        lib.XFree.argtypes = [ctypes.c_void_p]
        lib.XCloseDisplay.argtypes = [ctypes.c_void_p]
        # A window can vanish between its event and our question about it;
        # the default handler would end this program.
        self.handler_type = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)
        self.handler = self.handler_type(lambda display, error: 0)
        lib.XSetErrorHandler(self.handler)
        self.display = lib.XOpenDisplay(None)
        if not self.display:
            raise SystemExit("bench_ui.py: cannot open the X display")
        self.root = lib.XDefaultRootWindow(self.display)

    def viewable(self, window):
        attributes = WindowAttributes()
        if not self.lib.XGetWindowAttributes(self.display, window, ctypes.byref(attributes)):
            return False
        return attributes.map_state == IS_VIEWABLE

    def wm_class(self, window):
        hint = ClassHint()
        if not self.lib.XGetClassHint(self.display, window, ctypes.byref(hint)):
            return ""
        parts = [ctypes.string_at(p).decode(errors="replace") for p in (hint.res_name, hint.res_class) if p]
        for p in (hint.res_name, hint.res_class):
            if p:
                self.lib.XFree(p)
        return " ".join(parts)


class WindowWatch:
    """Watches for a top-level window of a class to become viewable.

    Select the root's substructure before the program starts; every new
    top-level window is then watched for its own map, and candidates are
    checked again on each event, since a window manager maps its frame
    after the client window."""

    def __init__(self, wanted):
        self.x = X()
        self.wanted = wanted.lower()
        self.watched = set()
        self.candidates = set()
        self.x.lib.XSelectInput(self.x.display, self.x.root, SUBSTRUCTURE_NOTIFY_MASK)
        self.x.lib.XSync(self.x.display, 0)

    def _matches(self, window):
        return self.wanted in self.x.wm_class(window).lower()

    def wait(self, deadline):
        """Monotonic time at which the window was viewable, or None."""
        lib, display = self.x.lib, self.x.display
        event = Event()
        fd = lib.XConnectionNumber(display)
        while True:
            while lib.XPending(display):
                lib.XNextEvent(display, ctypes.byref(event))
                now = time.monotonic()
                if event.type == CREATE_NOTIFY and event.first == self.x.root:
                    window = event.window
                    self.watched.add(window)
                    lib.XSelectInput(display, window, STRUCTURE_NOTIFY_MASK)
                    lib.XSync(display, 0)
                    # It may have been mapped before we asked to hear of it.
                    if self.x.viewable(window) and self._matches(window):
                        return time.monotonic()
                elif event.type == MAP_NOTIFY and event.window in self.watched:
                    if self._matches(event.window):
                        self.candidates.add(event.window)
                for window in list(self.candidates):
                    if self.x.viewable(window):
                        return now
            remaining = deadline - time.monotonic()
            if remaining <= 0:
                return None
            select.select([fd], [], [], min(remaining, 0.05))


class Child:
    """A started program that is always ended again."""

    def __init__(self, command, log):
        self.log = open(log, "wb") if log else subprocess.DEVNULL
        self.started = time.monotonic()
        self.process = subprocess.Popen(command, stdout=self.log, stderr=self.log, start_new_session=True)

    def end(self, grace=5.0):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(grace)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        if self.log is not subprocess.DEVNULL:
            self.log.close()


def status(pid):
    """Fields of /proc/PID/status in kB or counts, or {} once it is gone."""
    values = {}
    try:
        with open(f"/proc/{pid}/status", encoding="ascii", errors="replace") as handle:
            for line in handle:
                key, _, rest = line.partition(":")
                fields = rest.split()
                if fields and fields[0].isdigit():
                    values[key] = int(fields[0])
    except OSError:
        return {}
    return values


def split_command(args):
    if "--" not in args:
        raise SystemExit(__doc__)
    cut = args.index("--")
    return args[:cut], args[cut + 1:]


def wait_for_text(path, text, deadline):
    while time.monotonic() < deadline:
        with open(path, encoding="utf-8", errors="replace") as handle:
            if text in handle.read():
                return True
        time.sleep(0.05)
    return False


def mapped(args):
    options, command = split_command(args)
    wanted, log, until = options[0], options[1], options[2] if len(options) > 2 else None
    watch = WindowWatch(wanted)
    child = Child(command, log)
    try:
        at = watch.wait(child.started + 60)
        if at is not None and until is not None:
            wait_for_text(log, until, time.monotonic() + 30)
    finally:
        child.end()
    if at is None:
        return {"error": f"no {wanted} window within 60 s"}
    return {"started": child.started, "mapped_ms": (at - child.started) * 1000}


def memory(args):
    (wanted, pages, log), command = split_command(args)
    pages = int(pages)
    watch = WindowWatch(wanted) if pages > 0 else None
    child = Child(command, log)
    last = {}
    try:
        if watch is not None:
            if watch.wait(child.started + 60) is None:
                return {"error": f"no {wanted} window within 60 s"}
            for _ in range(pages):
                subprocess.run(["xdotool", "key", "Page_Down"], check=False)
                time.sleep(0.05)
            time.sleep(3)  # icons of the last rows are loaded in the background
            last = status(child.process.pid)
        else:
            deadline = child.started + 180
            while child.process.poll() is None and time.monotonic() < deadline:
                sample = status(child.process.pid)
                if "VmRSS" in sample:  # a process that is quitting has none
                    last = sample
                time.sleep(0.02)
            if child.process.poll() is None:
                return {"error": "did not quit within 180 s"}
    finally:
        child.end()
    return {"rss_kb": last.get("VmRSS"), "peak_rss_kb": last.get("VmHWM"), "exit": child.process.returncode}


def wakeups(args):
    pid, seconds = int(args[0]), float(args[1])

    def switches():
        total = 0
        for task in os.listdir(f"/proc/{pid}/task"):
            fields = status(f"{pid}/task/{task}")
            total += fields.get("voluntary_ctxt_switches", 0) + fields.get("nonvoluntary_ctxt_switches", 0)
        return total

    def cpu_seconds():
        with open(f"/proc/{pid}/stat", encoding="ascii") as handle:
            fields = handle.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    threads = len(os.listdir(f"/proc/{pid}/task"))
    before, cpu_before = switches(), cpu_seconds()
    time.sleep(seconds)
    after, cpu_after = switches(), cpu_seconds()
    return {"per_second": (after - before) / seconds, "cpu_ms": (cpu_after - cpu_before) * 1000,
            "threads": threads, "seconds": seconds, "rss_kb": status(pid).get("VmRSS")}


PREFIXES = ("Quick Open Simple Smart Tiny Grand Bright Calm Swift Deep Clear Prime Solid Gentle Rapid Silent "
            "Vivid Nimble Polar Lunar Solar Amber Coral Jade Onyx").split()
NOUNS = ("Settings Editor Viewer Player Terminal Calendar Browser Mail Notes Files Photos Music Maps Clock "
         "Weather Chat Contacts Calculator Dictionary Scanner Recorder Monitor Console Studio Reader Writer "
         "Sheets Slides Draw Paint Games Chess Sudoku Backup Archive Tasks Journal Budget Radio Camera").split()


def tree(args):
    root, count = args[0], int(args[1])
    icons = sorted({os.path.splitext(name)[0]
                    for folder, _, names in os.walk("/usr/share/icons/Adwaita")
                    for name in names if name.endswith(".png") and "symbolic" not in folder + name})
    for sub in ("home", "data/applications", "system", "config", "cache", "xdg", "runtime"):
        os.makedirs(os.path.join(root, sub), exist_ok=True)
    os.chmod(os.path.join(root, "runtime"), 0o700)
    # Only the user's folder holds entries; the system folder lends the
    # icons and the MIME database (without which GLib cannot tell a PNG).
    for name in ("icons", "mime"):
        os.symlink(f"/usr/share/{name}", os.path.join(root, "system", name))
    combinations = len(PREFIXES) * len(NOUNS)
    for i in range(count):
        name = f"{PREFIXES[i % len(PREFIXES)]} {NOUNS[i // len(PREFIXES) % len(NOUNS)]}"
        if i >= combinations:
            name += f" {i // combinations + 1}"
        with open(os.path.join(root, "data/applications", f"bench-{i:05d}.desktop"), "w", encoding="utf-8") as f:
            f.write(f"[Desktop Entry]\nType=Application\nName={name}\nExec=true\nIcon={icons[i % len(icons)]}\n")
    if len(args) > 2:
        size = min(int(args[2]), count)
        os.makedirs(os.path.join(root, "data/Orrery"), exist_ok=True)
        layout = {"version": 1, "hidden": [], "items": [{"folder": {"_0": {
            "id": str(uuid.uuid4()).upper(), "name": "Benchmark",
            "appIDs": [f"bench-{i:05d}.desktop" for i in range(size)]}}}]}
        with open(os.path.join(root, "data/Orrery/layout.json"), "w", encoding="utf-8") as f:
            json.dump(layout, f, indent=2, sort_keys=True)
    return {"apps": count, "icons": len(icons)}


BEGIN, END = "<!-- bench-ui: written by scripts/bench-ui, kept by scripts/bench -->", "<!-- /bench-ui -->"
FRAME_MS = 1000 / 60
LOG_LINE = re.compile(r"^\s*([\d.]+) \S+: (.*)$")


def log_lines(path):
    """(seconds on the monotonic clock, message) of each line of a log."""
    lines = []
    with open(path, encoding="utf-8", errors="replace") as handle:
        for line in handle:
            match = LOG_LINE.match(line)
            if match:
                lines.append((float(match.group(1)), match.group(2)))
    return lines


def perf_steps(path):
    steps = []
    for _, message in log_lines(path):
        match = re.fullmatch(r"perf-test: (.+): ([\d.]+) ms", message)
        if match:
            steps.append((match.group(1), float(match.group(2))))
    return steps


def renderer(path):
    found = []
    for _, message in log_lines(path):
        match = re.search(r"RENDERER: (.*?) VERSION", message)
        if match:
            found.append(match.group(1).strip())
        if message.endswith("render loop"):
            found.append(message)
    return ", ".join(found)


def spread(values, unit="ms"):
    if not values:
        return "–"
    values = sorted(values)
    if len(values) == 1:
        return f"{values[0]:.0f} {unit}"
    return f"{statistics.median(values):.0f} {unit} ({values[0]:.0f}–{values[-1]:.0f}, {len(values)} runs)"


def median_worst(values):
    if not values:
        return "–"
    return f"median {statistics.median(values):.1f} ms, slowest {max(values):.1f} ms ({len(values)} steps)"


def megabytes(kb):
    return f"{kb / 1024:.0f} MB" if kb else "–"


def verdict(value, limit):
    return "met" if value <= limit else "missed"


def report(args):
    results_path, output = args
    results = [json.loads(line) for line in open(results_path, encoding="utf-8") if line.strip()]
    env = next(r for r in results if r["kind"] == "env")
    cold = {"orrery": [], "rofi": []}
    first_frames = []
    for r in results:
        if r["kind"] != "cold" or "mapped_ms" not in r["result"]:
            continue
        cold[r["program"]].append(r["result"]["mapped_ms"])
        if r["program"] == "orrery":
            for at, message in log_lines(r["log"]):
                if "[--show-overlay] overlay shown in" in message:
                    first_frames.append((at - r["result"]["started"]) * 1000)
    perf = {r["variant"]: r for r in results if r["kind"] == "perf"}
    rofi_memory = next((r["result"] for r in results if r["kind"] == "rofi-memory"), {})
    idle = next((r["result"] for r in results if r["kind"] == "idle"), {})

    def steps(variant, prefix):
        if variant not in perf:
            return []
        return [ms for name, ms in perf_steps(perf[variant]["log"]) if name.startswith(prefix)]

    gl_renderer = renderer(perf["opengl"]["log"]) if "opengl" in perf else "unknown"
    chose_software = "default" in perf and any(
        "Qt Quick zeichnet in Software" in message for _, message in log_lines(perf["default"]["log"]))
    reshow = steps("default", "show again")
    keys = steps("default", "type") + steps("default", "erase")
    pages = steps("default", "page")
    first_show = [v for name, v in perf_steps(perf["default"]["log"]) if name == "show"] if "default" in perf else []
    soft_reshow, soft_keys = steps("opengl", "show again"), steps("opengl", "type") + steps("opengl", "erase")
    soft_pages = steps("opengl", "page")
    soft_first = [v for name, v in perf_steps(perf["opengl"]["log"]) if name == "show"] if "opengl" in perf else []

    lines = [
        BEGIN,
        "## The overlay in a real X server",
        "",
        "Written by `scripts/bench-ui` (and kept as it is by `scripts/bench`): the release build of",
        f"`orrery` and `rofi -show drun -show-icons` side by side on the same {env['apps']:,} desktop entries",
        "(distinct names, icons cycling over the full-colour icons of Adwaita), each in its own",
        "temporary HOME and XDG folders, in `Xvfb` (1920×1080×24) with openbox.",
        "",
        f"- Date: {env['date']}; CPU: {env['cpu']}; load average before: {env['load_before']}, "
        f"after: {env['load_after']}.",
        f"- Qt {env['qt']}; Orrery chose "
        + ("Qt Quick's software renderer (no GPU found)" if chose_software else "OpenGL")
        + f"; with OpenGL forced: {gl_renderer}; rofi {env['rofi']}.",
    ] + ([f"- Note: {env['note']}"] if env.get("note") else []) + [
        "",
        "| measure | Orrery | Orrery, OpenGL forced | rofi |",
        "|---|---|---|---|",
        f"| cold start → window viewable | {spread(cold['orrery'])} | – | {spread(cold['rofi'])} |",
        f"| cold start → first frame swapped | {spread(first_frames)} | – | – |",
        f"| running, show → first frame swapped (first show after start) | "
        f"{spread(first_show)} | {spread(soft_first)} | – |",
        f"| running, show → first frame swapped (shown before) | {median_worst(reshow)} | "
        f"{median_worst(soft_reshow)} | – |",
        f"| keystroke in the search → next frame | {median_worst(keys)} | {median_worst(soft_keys)} | – |",
        f"| page turn → next frame | {median_worst(pages)} | {median_worst(soft_pages)} | – |",
        f"| resident memory after showing every page (peak) | "
        f"{megabytes(perf.get('default', {}).get('result', {}).get('rss_kb'))} "
        f"({megabytes(perf.get('default', {}).get('result', {}).get('peak_rss_kb'))}) | "
        f"{megabytes(perf.get('opengl', {}).get('result', {}).get('rss_kb'))} "
        f"({megabytes(perf.get('opengl', {}).get('result', {}).get('peak_rss_kb'))}) | "
        f"{megabytes(rofi_memory.get('rss_kb'))} after paging through the whole list |",
        f"| resident memory, running, never shown | {megabytes(idle.get('rss_kb'))} | – | – |",
        f"| wake-ups per second while hidden | "
        + (f"{idle['per_second']:.1f} ({idle['threads']} threads, {idle['cpu_ms']:.0f} ms CPU in "
           f"{idle['seconds']:.0f} s)" if idle else "–") + " | – | – |",
        "",
    ]
    goals = []
    if reshow:
        goals.append(f"- Showing a running overlay should cost one frame ({FRAME_MS:.1f} ms at 60 Hz): "
                     f"{verdict(statistics.median(reshow), FRAME_MS)} (median {statistics.median(reshow):.1f} ms).")
    if keys:
        goals.append(f"- A keystroke should show its result in the next frame: "
                     f"{verdict(statistics.median(keys), FRAME_MS)} for the median "
                     f"({statistics.median(keys):.1f} ms), {verdict(max(keys), FRAME_MS)} for the slowest "
                     f"({max(keys):.1f} ms).")
    lines += ["Against one frame:", ""] + goals + [""] + [
        "How it was measured and what limits it:",
        "",
        "- Cold start: from just before the program is started to the moment its window is viewable,",
        "  seen from a separate X client that listens for the map of the program's window (the same",
        "  watch for both programs). For Orrery, the line \"overlay shown\" of `--show-overlay`, stamped",
        "  with the monotonic clock, also gives the first frame swapped; for rofi only the map is",
        "  seen from outside (it loads its icons in the background after that).",
        "  Both runs follow a run that was not counted, so files are in the page cache and Orrery",
        "  starts from its saved arrangement. Orrery shows the overlay once its first scan is in,",
        "  so that first frame has every name and icon source, like rofi's list when it maps.",
        "- Running show, keystroke and page figures come from `orrery --perf-test`, which times each",
        "  change to the next swapped frame inside the program, and ends with a few hide and show",
        "  cycles (a short pause between them). The first show after the start also builds the",
        "  scene. rofi has no resident instance to show, so it has no such figures.",
        "- Memory: VmRSS sampled every 20 ms until `--perf-test` quits (last sample; VmHWM in",
        "  brackets); rofi's after Page_Down through all its entries and 3 s for icons to load.",
        "- Wake-ups: the sum of voluntary and involuntary context switches of every thread of a",
        "  running `orrery` (started without `--show-overlay`, 5 s to settle) over 10 s.",
        "- rofi is not the same work: a list of 15 rows with small icons in a window of its own",
        "  size, against a full-screen grid of 116-point icons; it is the lower bound a light",
        "  launcher on the same machine reaches, not a like-for-like rival.",
        "- Xvfb has no GPU, and this machine has no DRM device: Orrery then draws with Qt Quick's",
        "  software renderer by itself (first column). The second column forces OpenGL, which Mesa's",
        "  llvmpipe emulates on the CPU for the 1920×1080 window; llvmpipe's own threads and memory",
        "  count as Orrery's there. On a real GPU frames and memory differ; these figures compare",
        "  runs, they are not what a user sees.",
        "- The machine has two cores that other work shares; a busy core shows up as single slow",
        "  steps, which is why medians are given, and the load average is recorded above.",
        "- Xvfb has no vertical blank, so a swapped frame is not a frame on a display; the one-frame",
        "  goal is checked against 60 Hz.",
        END,
    ]
    section = "\n".join(lines) + "\n"
    try:
        with open(output, encoding="utf-8") as handle:
            text = handle.read()
    except FileNotFoundError:
        text = "# Benchmarks\n"
    if BEGIN in text and END in text:
        before, rest = text.split(BEGIN, 1)
        after = rest.split(END, 1)[1].lstrip("\n")
        text = before + section + (("\n" + after) if after else "")
    else:
        text = text.rstrip("\n") + "\n\n" + section
    with open(output, "w", encoding="utf-8") as handle:
        handle.write(text)
    return {"wrote": output}


FOLDER_BEGIN, FOLDER_END = "<!-- bench-ui-folder: written by scripts/bench-ui folder -->", "<!-- /bench-ui-folder -->"


def replace_section(output, begin, end, section):
    try:
        with open(output, encoding="utf-8") as handle:
            text = handle.read()
    except FileNotFoundError:
        text = "# Benchmarks\n"
    if begin in text and end in text:
        before, rest = text.split(begin, 1)
        after = rest.split(end, 1)[1].lstrip("\n")
        text = before + section + (("\n" + after) if after else "")
    else:
        text = text.rstrip("\n") + "\n\n" + section
    with open(output, "w", encoding="utf-8") as handle:
        handle.write(text)


def folder_report(args):
    output, apps, size, program, logs = args[0], int(args[1]), int(args[2]), args[3], args[4:]
    opened, software, pages = [], [], []
    for path in logs:
        steps = perf_steps(path)
        times = [ms for name, ms in steps if name.startswith("open folder")]
        (software if "opengl" in os.path.basename(path) else opened).extend(times)
        if "opengl" not in os.path.basename(path):
            pages.extend(ms for name, ms in steps if name.startswith("page "))
    renderers = sorted({renderer(path) for path in logs if "opengl" in os.path.basename(path)} - {""})
    chose_software = any("Qt Quick zeichnet in Software" in message
                         for path in logs if "opengl" not in os.path.basename(path)
                         for _, message in log_lines(path))
    load = open("/proc/loadavg", encoding="ascii").read().split()[:3]
    cpu = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo", encoding="ascii", errors="replace")
                if line.startswith("model name")), "unknown")
    lines = [
        FOLDER_BEGIN,
        "## Opening a folder",
        "",
        f"Written by `scripts/bench-ui folder`: `{program} --perf-test` with {apps:,} apps,",
        f"the first {size} of them in one folder, in `Xvfb` (1920×1080×24) with openbox; the run opens and",
        "closes the folder five times and times each opening from the request to the next swapped frame",
        "(the panel with its title and the first rows of tiles, icons from the preloaded cache).",
        "",
        f"- Date: {time.strftime('%Y-%m-%d %H:%M %Z')}; CPU: {cpu} ({os.cpu_count()} logical CPUs); "
        f"load average after: {' '.join(load)}; Qt Quick: "
        + ("the software renderer, chosen without a GPU" if chose_software else "OpenGL")
        + f"; with OpenGL forced: {', '.join(renderers) or 'unknown'}.",
        f"- Open a folder of {size} apps → first frame of the panel: {median_worst(opened)}; with OpenGL "
        f"forced: {median_worst(software)}.",
        f"- For comparison, page turns of the grid in the same runs: {median_worst(pages)}.",
    ]
    if os.environ.get("ORRERY_BENCH_NOTE"):
        lines.append(f"- Note: {os.environ['ORRERY_BENCH_NOTE']}")
    if opened:
        lines.append(f"- Goal: one frame ({FRAME_MS:.1f} ms at 60 Hz): {verdict(statistics.median(opened), FRAME_MS)} "
                     f"for the median, {verdict(max(opened), FRAME_MS)} for the slowest.")
    lines += ["- The first opening after the start also creates the panel's tiles for the first time; Xvfb",
              "  has no GPU and the two cores are shared, as in the section above.", FOLDER_END]
    replace_section(output, FOLDER_BEGIN, FOLDER_END, "\n".join(lines) + "\n")
    return {"wrote": output, "open_ms": opened, "software_ms": software}


def main(argv):
    commands = {"tree": tree, "mapped": mapped, "memory": memory, "wakeups": wakeups, "report": report,
                "folder-report": folder_report}
    if len(argv) < 2 or argv[1] not in commands:
        print(__doc__, file=sys.stderr)
        return 2
    print(json.dumps(commands[argv[1]](argv[2:])))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
