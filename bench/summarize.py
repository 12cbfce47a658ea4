#!/usr/bin/env python3
"""Summarises the TSV files of bench/run_bench.sh: per file, the runs that succeeded, the median
and maximum seconds per chain and per 100 residues and of peak memory, and every failure.

A quarnel table (default.tsv, noss.tsv) counts a run as successful when it ended with status 0
and printed a report line; the DSSP table (dssp.tsv) when the adapter ended with status 0 and
printed a residue table with at least one residue.
"""
import csv
import os
import statistics
import sys

MAX_FAILURES_LISTED = 40


def read_rows(path):
    with open(path, newline="") as handle:
        return list(csv.DictReader(handle, delimiter="\t", quoting=csv.QUOTE_NONE))


def as_int(text):
    try:
        return int(text)
    except (TypeError, ValueError):
        return None


def succeeded(row):
    if as_int(row["status"]) != 0:
        return False
    if "report" in row:
        return bool(row["report"].strip())
    return row["table"] == "yes" and (as_int(row["table_rows"]) or 0) > 0


def median_and_max(values):
    if not values:
        return "-", "-"
    return "%.3f" % statistics.median(values), "%.3f" % max(values)


def summarise(path):
    rows = read_rows(path)
    good = [r for r in rows if succeeded(r)]
    bad = [r for r in rows if not succeeded(r)]
    name = os.path.splitext(os.path.basename(path))[0]
    title = "DSSP adapter alone" if name == "dssp" else "quarnel (%s)" % name
    print("%s: %d files, %d succeeded, %d failed" % (title, len(rows), len(good), len(bad)))

    seconds = [float(r["seconds"]) for r in good]
    per100 = [100.0 * float(r["seconds"]) / int(r["residues"])
              for r in good if (as_int(r["residues"]) or 0) > 0]
    peak = [float(r["peak_kb"]) for r in good]
    for label, values in (("seconds per file", seconds),
                          ("seconds per 100 residues", per100),
                          ("peak memory kB", peak)):
        med, top = median_and_max(values)
        print("  %-26s median %10s   max %10s" % (label, med, top))
    if good:
        slowest = max(good, key=lambda r: float(r["seconds"]))
        print("  slowest: %s (%s residues, %s s)" %
              (slowest["file"], slowest["residues"], slowest["seconds"]))
    for row in bad[:MAX_FAILURES_LISTED]:
        print("  FAILED %s: status %s: %s" % (row["file"], row["status"], row["message"]))
    if len(bad) > MAX_FAILURES_LISTED:
        print("  ... and %d more failures" % (len(bad) - MAX_FAILURES_LISTED))
    if rows and "domains" in rows[0]:
        counts = {}
        for row in good:
            counts[row["domains"]] = counts.get(row["domains"], 0) + 1
        spread = ", ".join("%s: %d" % (d, counts[d]) for d in sorted(counts, key=int))
        print("  chains by number of domains: %s" % (spread or "-"))
    print()


def main(paths):
    if not paths:
        print("usage: summarize.py table.tsv...", file=sys.stderr)
        return 2
    for path in paths:
        summarise(path)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
