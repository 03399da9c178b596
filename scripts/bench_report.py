#!/usr/bin/env python3
"""Writes docs/benchmarks.md from Google Benchmark JSON results.

    scripts/bench_report.py OUTPUT.md LOAD_BEFORE LOAD_AFTER RESULT.json...

One section per benchmark program, one table per benchmark in it: the
sizes (the benchmark's arguments), the time, the growth against the next
smaller size, and, where the same run measured a reference for the same
work, the reference's time and the ratio. The section between the bench-ui
markers, written by scripts/bench-ui from a run of the real program, is
kept as it is. Standard library only.
"""

import datetime
import json
import os
import platform
import re
import sys

# Benchmarks measured against another implementation of the same work in the
# same run: benchmark family -> (reference family, how to name it).
REFERENCES = {
    "BM_ScanDesktopEntries": ("BM_GioListing", "GIO's listing"),
}

# scripts/bench-ui writes its section between these lines (see bench_ui.py).
KEPT_BEGIN, KEPT_END = "<!-- bench-ui:", "<!-- /bench-ui -->"
TRIGGERS_BEGIN, TRIGGERS_END = "<!-- bench-triggers:", "<!-- /bench-triggers -->"

UNIT_SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def cpu_model():
    try:
        with open("/proc/cpuinfo", encoding="utf-8", errors="replace") as info:
            for line in info:
                if line.lower().startswith("model name"):
                    return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or "unknown CPU"


def parse_name(name):
    """'BM_Filter/1000/3/manual_time' -> ('BM_Filter', (1000, 3), True)."""
    parts = name.split("/")
    args, manual = [], False
    for part in parts[1:]:
        if part == "manual_time":
            manual = True
        elif re.fullmatch(r"-?\d+", part):
            args.append(int(part))
        elif ":" in part and re.fullmatch(r"-?\d+", part.split(":", 1)[1]):
            args.append(int(part.split(":", 1)[1]))
    return parts[0], tuple(args), manual


def measured_seconds(run, manual):
    # Runs that time themselves (manual time) report that time as real time;
    # all others are compared by CPU time, which a busy machine distorts less.
    value = run["real_time"] if manual else run["cpu_time"]
    return value * UNIT_SECONDS[run.get("time_unit", "ns")]


def format_time(seconds):
    for unit, scale in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= scale:
            return f"{seconds / scale:.3g} {unit}"
    return f"{seconds / 1e-9:.3g} ns"


def format_number(value):
    if isinstance(value, float) and not value.is_integer():
        return f"{value:,.0f}" if abs(value) >= 1000 else f"{value:.3g}"
    return f"{int(value):,}"


def format_counter(name, value):
    # Counters named per_* are times per item, in seconds.
    if name.startswith("per_"):
        return format_time(value)
    return format_number(value)


def families(benchmarks):
    """Groups the iteration runs of one program by family, in run order."""
    grouped, order, fits = {}, [], {}
    for run in benchmarks:
        if run.get("run_type") == "aggregate":
            if run.get("aggregate_name") == "BigO":
                fits[run["name"].rsplit("_BigO", 1)[0]] = run
            continue
        if run.get("error_occurred"):
            family, args, manual = parse_name(run["name"])
            grouped.setdefault(family, []).append((args, manual, run))
            if family not in order:
                order.append(family)
            continue
        family, args, manual = parse_name(run["name"])
        if family not in grouped:
            order.append(family)
        grouped.setdefault(family, []).append((args, manual, run))
    return order, grouped, fits


def table(family, rows, reference, counters):
    by_args = {args: (manual, run) for args, manual, run in rows}
    header = ["size", "time", "growth"]
    if reference:
        header += [reference[1], "× reference"]
    header += counters
    lines = ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)]
    for args, manual, run in rows:
        label = " / ".join(f"{a:,}" for a in args) or "–"
        if run.get("error_occurred"):
            lines.append(f"| {label} | error: {run.get('error_message', '')} |" + " |" * (len(header) - 2))
            continue
        seconds = measured_seconds(run, manual)
        growth = "–"
        if args:
            smaller = [a for a in by_args if a[1:] == args[1:] and a[0] < args[0]]
            if smaller:
                previous = max(smaller)
                prev_manual, prev_run = by_args[previous]
                if not prev_run.get("error_occurred"):
                    before = measured_seconds(prev_run, prev_manual)
                    if before > 0:
                        growth = f"×{seconds / before:.2f} for ×{args[0] / previous[0]:g} size"
        cells = [label, format_time(seconds), growth]
        if reference:
            ref = reference[0].get(args)
            if ref and not ref[1].get("error_occurred"):
                ref_seconds = measured_seconds(ref[1], ref[0])
                cells += [format_time(ref_seconds), f"{seconds / ref_seconds:.2f}" if ref_seconds > 0 else "–"]
            else:
                cells += ["–", "–"]
        cells += [format_counter(name, run[name]) if name in run else "–" for name in counters]
        lines.append("| " + " | ".join(cells) + " |")
    return lines


def kept_section(path, begin=KEPT_BEGIN, end_marker=KEPT_END):
    """The bench-ui (or other kept) section of the report being replaced, or ''."""
    try:
        with open(path, encoding="utf-8") as handle:
            text = handle.read()
    except FileNotFoundError:
        return ""
    start = text.find(begin)
    end = text.find(end_marker, start)
    if start < 0 or end < 0:
        return ""
    return text[start:end + len(end_marker)]


def main(argv):
    if len(argv) < 5:
        print(__doc__, file=sys.stderr)
        return 2
    output, load_before, load_after, results = argv[1], argv[2], argv[3], argv[4:]
    now = datetime.datetime.now().astimezone()
    out = [
        "# Benchmarks",
        "",
        "Generated by `scripts/bench` from one run of every benchmark program in a release build;",
        "do not edit by hand.",
        "",
        f"- Date: {now.strftime('%Y-%m-%d %H:%M %Z')}",
        f"- CPU: {cpu_model()} ({os.cpu_count()} logical CPUs)",
        f"- Load average (1, 5, 15 min) before the run: {load_before}; after: {load_after}.",
        "  Other work on the machine during the run inflates the times; CPU time is shown",
        "  (the time a benchmark reports itself where it does), which suffers less than wall time.",
    ] + ([f"- Note: {os.environ['ORRERY_BENCH_NOTE']}"] if os.environ.get("ORRERY_BENCH_NOTE") else []) + [
        "- Sizes are the benchmark's arguments (with two, the second is a variant such as the query",
        "  length); growth compares a row with the next smaller first argument and the same rest.",
        "",
    ]
    for path in results:
        with open(path, encoding="utf-8") as handle:
            data = json.load(handle)
        program = os.path.splitext(os.path.basename(path))[0]
        order, grouped, fits = families(data.get("benchmarks", []))
        out += [f"## {program}", ""]
        references = {ref for ref, _ in (REFERENCES[f] for f in order if f in REFERENCES)}
        for family in order:
            if family in references:
                continue
            rows = grouped[family]
            reference = None
            if family in REFERENCES and REFERENCES[family][0] in grouped:
                ref_family, ref_name = REFERENCES[family]
                reference = ({args: (manual, run) for args, manual, run in grouped[ref_family]}, ref_name)
            counters = sorted({k for _, _, run in rows for k in run
                               if k not in {"name", "family_index", "per_family_instance_index", "run_name",
                                            "run_type", "repetitions", "repetition_index", "threads",
                                            "iterations", "real_time", "cpu_time", "time_unit",
                                            "error_occurred", "error_message", "label", "aggregate_name",
                                            "aggregate_unit", "big_o", "rms"}
                               and isinstance(run[k], (int, float))})
            out += [f"### {family}", ""]
            out += table(family, rows, reference, counters)
            fit = fits.get(family)
            if fit and "big_o" in fit:
                out += ["", f"Fitted complexity: {fit['big_o']} (coefficient {fit.get('cpu_coefficient', 0):.3g})."]
            out.append("")
        out.append("")
    kept = kept_section(output)
    # scripts/bench-triggers writes a section of its own, kept the same way.
    triggers = kept_section(output, TRIGGERS_BEGIN, TRIGGERS_END)
    if triggers:
        kept = (kept + "\n\n" + triggers) if kept else triggers
    with open(output, "w", encoding="utf-8") as handle:
        handle.write("\n".join(out).rstrip("\n") + "\n" + ("\n" + kept + "\n" if kept else ""))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
