#!/usr/bin/env python3
"""Speed over every protein chain of a structure folder, selected as users select one
(-pdbpath pdb/ 1abcA), one process at a time: wall seconds per chain, and every report compared
with bench/reference/chains.tsv.

Usage: python3 bench/engine_speed.py [--tool PATH] [--baseline PATH] [--mode noss|default]
                                     [--threads 1,default] [--structures DIR] [--only CODE,...]
                                     [--tsv FILE]
--mode noss (the engine): the tool with -noss, once per QUARNEL_THREADS value of --threads.
--mode default (secondary structure): the tool with its built-in DSSP (--dssp builtin), by
default and with -noss, the median chain's ratio of the two printed at the end.
--baseline PATH also times another build on the same chains, in the same mode, with one thread
and, by default, DSSP through tools/quarnel-dssp (as the reference was made), so that both are
measured in one run on the same machine state. Prints one line per chain and the totals; exit
status 1 when a report differs from the reference.
In -noss mode it ends by timing the largest chain on one thread pinned to each core in turn: on a
virtual machine the cores need not be equally fast (a core whose physical twin is busy with
another guest's work), and the speed-up two threads can reach is bounded by their speeds.
"""
import argparse
import csv
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
REFERENCE = os.path.join(ROOT, "bench", "reference", "chains.tsv")


ADAPTER = os.path.join(ROOT, "tools", "quarnel-dssp")


def run(tool, scratch, name, options, threads, adapter=False):
    env = dict(os.environ)
    env.pop("DSSP_PATH", None)
    if adapter:
        env["DSSP_PATH"] = "'" + ADAPTER.replace("'", "'\\''") + "'"
    if threads == "default":
        env.pop("QUARNEL_THREADS", None)
    else:
        env["QUARNEL_THREADS"] = threads
    started = time.monotonic()
    result = subprocess.run([tool] + options + ["-pdbpath", "pdb/", name], cwd=scratch, env=env,
                            capture_output=True)
    elapsed = time.monotonic() - started
    lines = [l for l in result.stdout.decode(errors="replace").split("\n") if l.count("\t") >= 2]
    return result.returncode, (lines[-1].replace("\t", " ") if lines else ""), elapsed


def core_speeds(tool, structures, code, chain, runs=3):
    """Median seconds of one chain on one thread pinned to each core, and the bound the cores
    put on a two-thread speed-up: their summed speed over the fastest one's."""
    cores = sorted(os.sched_getaffinity(0))
    if len(cores) < 2:
        return None
    scratch = tempfile.mkdtemp(prefix="quarnel-cores.")
    try:
        os.mkdir(os.path.join(scratch, "pdb"))
        shutil.copy(os.path.join(structures, code + ".pdb"), os.path.join(scratch, "pdb", code + ".pdb"))
        env = dict(os.environ, QUARNEL_THREADS="1")
        medians = {}
        for core in cores:
            times = []
            for _ in range(runs):
                started = time.monotonic()
                subprocess.run([tool, "-noss", "-pdbpath", "pdb/", code + chain], cwd=scratch, env=env,
                               capture_output=True, preexec_fn=lambda c=core: os.sched_setaffinity(0, {c}))
                times.append(time.monotonic() - started)
            medians[core] = statistics.median(times)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)
    fastest = min(medians.values())
    bound = sum(fastest / t for t in sorted(medians.values())[:2])
    return medians, bound


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", default=os.path.join(ROOT, "build", "quarnel"))
    parser.add_argument("--baseline", default="")
    parser.add_argument("--mode", choices=("noss", "default"), default="noss")
    parser.add_argument("--threads", default="1,default")
    parser.add_argument("--structures",
                        default=os.path.join(ROOT, "..", "shared", "data", "structures"))
    parser.add_argument("--only", default="")
    parser.add_argument("--tsv", default="")
    args = parser.parse_args()
    only = set(c for c in args.only.split(",") if c)
    tool = os.path.abspath(args.tool)
    # (label, tool, QUARNEL_THREADS, options, DSSP through the adapter, compared with)
    if args.mode == "noss":
        runs = [("quarnel/" + t, tool, t, ["-noss"], False, "noss") for t in args.threads.split(",")]
        if args.baseline:
            runs.insert(0, ("baseline", os.path.abspath(args.baseline), "1", ["-noss"], False, "noss"))
    else:
        runs = [("builtin", tool, "default", ["--dssp", "builtin"], False, "default"),
                ("noss", tool, "default", ["-noss"], False, "noss")]
        if args.baseline:
            runs.insert(0, ("baseline", os.path.abspath(args.baseline), "1", [], True, "default"))

    with open(REFERENCE, newline="") as handle:
        rows = [r for r in csv.DictReader(handle, delimiter="\t", quoting=csv.QUOTE_NONE)
                if not only or r["file"][:-4] in only]
    totals = {run[0]: 0.0 for run in runs}
    differences = 0
    table = []
    print("%-7s %6s  %s" % ("chain", "res", "  ".join("%12s" % run[0] for run in runs)))
    for row in rows:
        code = row["file"][:-4]
        scratch = tempfile.mkdtemp(prefix="quarnel-speed.")
        try:
            os.mkdir(os.path.join(scratch, "pdb"))
            shutil.copy(os.path.join(args.structures, code + ".pdb"),
                        os.path.join(scratch, "pdb", code + ".pdb"))
            times = []
            for label, path, threads, options, adapter, column in runs:
                expected = (int(row[column + "_status"]), row[column].replace("\\", ""))
                status, report, elapsed = run(path, scratch, code + row["chain"], options, threads,
                                              adapter)
                if expected[0] != 0 and status == 3 and "--dssp" in options:
                    status = expected[0]  # a batch run's failure status
                totals[label] += elapsed
                times.append(elapsed)
                if (status, report) != expected:
                    differences += 1
                    print("DIFF %s %s%s: expected %r, got [%d] %r" %
                          (label, code, row["chain"], expected, status, report))
        finally:
            shutil.rmtree(scratch, ignore_errors=True)
        table.append([code + row["chain"], row["residues"]] + ["%.3f" % t for t in times])
        print("%-7s %6s  %s" % (code + row["chain"], row["residues"],
                                "  ".join("%12.3f" % t for t in times)), flush=True)
    labels = [run[0] for run in runs]
    print("%-14s  %s" % ("total seconds", "  ".join("%12.2f" % totals[l] for l in labels)))
    if args.baseline:
        base = totals["baseline"]
        print("%-14s  %s" % ("speed-up", "  ".join(
            "%12.2f" % (base / totals[l]) if totals[l] > 0 else "-" for l in labels)))
    if args.mode == "default" and table:
        ratios = sorted(float(r[2 + labels.index("builtin")]) / float(r[2 + labels.index("noss")])
                        for r in table if float(r[2 + labels.index("noss")]) > 0)
        medians = [statistics.median(float(r[2 + i]) for r in table) for i in range(len(labels))]
        print("%-14s  %s" % ("median seconds", "  ".join("%12.3f" % m for m in medians)))
        print("median chain's default/noss ratio: %.2f (median of per-chain ratios %.2f)" %
              (medians[labels.index("builtin")] / medians[labels.index("noss")],
               statistics.median(ratios)))
    if args.tsv:
        with open(args.tsv, "w", newline="") as handle:
            writer = csv.writer(handle, delimiter="\t")
            writer.writerow(["chain", "residues"] + labels)
            writer.writerows(table)
    if args.mode == "noss" and rows:
        largest = max(rows, key=lambda r: int(r["residues"]))
        speeds = core_speeds(tool, args.structures, largest["file"][:-4], largest["chain"])
        if speeds:
            medians, bound = speeds
            print("%s on one thread pinned to each core: %s; two threads can be at most %.2fx one "
                  "thread on the fastest core" % (
                      largest["file"][:-4] + largest["chain"],
                      ", ".join("core %d %.3f s" % (c, t) for c, t in sorted(medians.items())), bound))
    print("%d chains, %d reports differ" % (len(rows), differences))
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main())
