#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes scripts/bench's table from Google Benchmark's JSON output.

    benchtable.py [--markdown FILE] ROWS=FILE.json...

When shops of more than one size were measured, a second table shows how each figure grows from one size
to the next (the aim: at most 1.5 times).

ROWS is the number of `movimenti` rows of the shop the file was measured on, "-" for benchmarks that use
no shop. A benchmark is named "<operation>/<engine>[/...]"; its time is the median of the repetitions (or
the mean of the runs when no aggregate was reported), its raw engine's time the counter "raw_ms" and the
ratio the one over the other. A benchmark that stopped with an error shows the error instead of a time.
"""
import json
import signal
import sys

ENGINES = ("sqlite", "postgresql")
RAW_COUNTERS = ("raw_ms", "ratio")
TO_MS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
# Fields of a JSON entry that are not counters.
NOT_COUNTERS = {
    "name", "family_index", "per_family_instance_index", "run_name", "run_type", "repetitions",
    "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit", "aggregate_name",
    "aggregate_unit", "error_occurred", "error_message", "label", "bytes_per_second", "items_per_second",
}
# Parts of a name that say how it was run, not what it measures.
RUN_OPTIONS = ("iterations:", "repeats:", "threads:", "min_time:", "min_warmup_time:")
RUN_FLAGS = ("manual_time", "real_time", "process_time")
DASH = "\u2014"


def split_name(name):
    """(operation, engine) of a benchmark's run name; engine is None for one that uses no shop."""
    parts = [p for p in name.split("/") if not p.startswith(RUN_OPTIONS) and p not in RUN_FLAGS]
    engine = None
    if len(parts) > 1 and parts[1] in ENGINES:
        engine = parts.pop(1)
    return "/".join(parts), engine


def number(value):
    return value if isinstance(value, (int, float)) and not isinstance(value, bool) else None


def results(rows, path):
    """One dict per benchmark of the file: operation, engine, rows, ms, raw_ms, counters, error."""
    try:
        with open(path, encoding="utf-8") as f:
            entries = json.load(f).get("benchmarks", [])
    except (OSError, ValueError) as e:
        print(f"benchtable: {path}: {e}", file=sys.stderr)
        return []
    by_run = {}
    for entry in entries:
        if not isinstance(entry, dict):
            continue
        name = entry.get("run_name") or entry.get("name", "?")
        run = by_run.setdefault(name, {"median": None, "runs": [], "error": None})
        if entry.get("error_occurred"):
            run["error"] = entry.get("error_message") or "error"
        elif entry.get("run_type") == "aggregate":
            if entry.get("aggregate_name") == "median":
                run["median"] = entry
        else:
            run["runs"].append(entry)
    made = []
    for name, run in by_run.items():
        operation, engine = split_name(name)
        row = {"operation": operation, "engine": engine, "rows": rows, "ms": None, "raw_ms": None,
               "counters": {}, "error": run["error"]}
        if not row["error"]:
            fill(row, run)
        made.append(row)
    return made


def fill(row, run):
    """The time and counters of a run: its median aggregate, or the mean of its repetitions."""
    entries = [run["median"]] if run["median"] else run["runs"]
    if not entries:
        row["error"] = "no result"
        return
    def mean(values):
        values = [v for v in values if v is not None]
        return sum(values) / len(values) if values else None
    times = [number(e.get("real_time")) for e in entries]
    scale = TO_MS.get(entries[0].get("time_unit", "ns"), 1e-6)
    ms = mean(times)
    if ms is None:
        row["error"] = "no time reported"
        return
    row["ms"] = ms * scale
    names = [k for k in entries[0] if k not in NOT_COUNTERS and number(entries[0][k]) is not None]
    for key in names:
        value = mean(number(e.get(key)) for e in entries)
        if key == "raw_ms":
            row["raw_ms"] = value
        elif key not in RAW_COUNTERS and value is not None:
            row["counters"][key] = value


def ms_text(ms):
    if ms is None:
        return DASH
    value, unit = (ms, "ms") if ms >= 0.1 else (ms * 1000, "\u00b5s")
    decimals = 0 if value >= 100 else 1 if value >= 10 else 2
    return f"{value:.{decimals}f} {unit}"


def short(value):
    return f"{value:.0f}" if abs(value) >= 100 else f"{value:.3g}"


def cells(row):
    rows = row["rows"]
    rows_text = DASH if rows == "-" else f"{int(rows):,}".replace(",", "\u202f") if rows.isdigit() else rows
    base = [row["operation"], row["engine"] or DASH, rows_text]
    if row["error"]:
        message = " ".join(str(row["error"]).split())
        if len(message) > 70:
            message = message[:69] + "\u2026"
        return base + ["skipped: " + message, DASH, DASH, ""]
    raw, ms = row["raw_ms"], row["ms"]
    ratio = f"{ms / raw:.2f}" if raw and ms is not None and raw > 0 else DASH
    extra = ", ".join(f"{k}={short(v)}" for k, v in sorted(row["counters"].items()))
    return base + [ms_text(ms), ms_text(raw) if raw else DASH, ratio, extra]


HEADER = ["operation", "engine", "rows", "median", "raw engine", "ratio", "counters"]


def order(row):
    rows = row["rows"]
    return (row["engine"] is None, row["operation"], ENGINES.index(row["engine"]) if row["engine"] else 0,
            int(rows) if rows.isdigit() else 0)


GROWTH_HEADER = ["operation", "engine", "from rows", "to rows", "from", "to", "growth"]
GROWTH_LIMIT = 1.5


def growth(table):
    """How each timed figure grows from one shop size to the next larger one measured: one line per step."""
    by_key = {}
    for row in table:
        if row["engine"] and row["rows"].isdigit() and row["ms"] is not None and not row["error"]:
            by_key.setdefault((row["operation"], row["engine"]), []).append(row)
    lines = []
    for (operation, engine), rows in sorted(by_key.items(), key=lambda item: (item[0][0],
                                                                              ENGINES.index(item[0][1]))):
        rows.sort(key=lambda r: int(r["rows"]))
        for small, large in zip(rows, rows[1:]):
            factor = large["ms"] / small["ms"] if small["ms"] > 0 else None
            verdict = DASH if factor is None else f"{factor:.2f}x" + (
                "" if factor <= GROWTH_LIMIT else f" (over {GROWTH_LIMIT}x)")
            lines.append([operation, engine, f"{int(small['rows']):,}".replace(",", "\u202f"),
                          f"{int(large['rows']):,}".replace(",", "\u202f"), ms_text(small["ms"]),
                          ms_text(large["ms"]), verdict])
    return lines


def print_table(header, lines, right_from, right_to):
    widths = [max(len(line[i]) for line in [header] + lines) for i in range(len(header))]
    for line in [header] + lines:
        print("  ".join(c.rjust(w) if right_from <= i < right_to else c.ljust(w)
                        for i, (c, w) in enumerate(zip(line, widths))).rstrip())


def markdown_table(f, header, lines, right_from, right_to):
    f.write("| " + " | ".join(header) + " |\n")
    f.write("|" + "|".join("---:" if right_from <= i < right_to else "---" for i in range(len(header))) + "|\n")
    for line in lines:
        f.write("| " + " | ".join(c.replace("|", "\\|") for c in line) + " |\n")


def main(argv):
    markdown = None
    inputs = []
    args = iter(argv)
    for arg in args:
        if arg == "--markdown":
            markdown = next(args, None)
        elif "=" in arg:
            inputs.append(arg.split("=", 1))
        else:
            print(__doc__, file=sys.stderr)
            return 2
    table = sorted((r for rows, path in inputs for r in results(rows, path)), key=order)
    lines = [cells(r) for r in table]
    print_table(HEADER, lines, 3, 6)
    steps = growth(table)
    if steps:
        print()
        print(f"Growth with the shop (each figure against the same one on the next smaller shop measured; "
              f"the aim is at most {GROWTH_LIMIT}x):")
        print_table(GROWTH_HEADER, steps, 2, 7)
    if markdown:
        with open(markdown, "w", encoding="utf-8") as f:
            markdown_table(f, HEADER, lines, 3, 6)
            if steps:
                f.write(f"\nGrowth with the shop, each figure against the same one on the next smaller shop "
                        f"measured (the aim is at most {GROWTH_LIMIT}x):\n\n")
                markdown_table(f, GROWTH_HEADER, steps, 2, 7)
    return 0


if __name__ == "__main__":
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # a table piped into head ends quietly
    sys.exit(main(sys.argv[1:]))
