#!/usr/bin/env python3
"""Engine speed over every protein chain of a structure folder, selected as users select one
(-pdbpath pdb/ 1abcA), one process at a time: wall seconds per chain with one engine thread and
with the default number, and the reports compared with bench/reference/chains.tsv.

Usage: python3 bench/engine_speed.py [--tool PATH] [--baseline PATH] [--mode noss|default]
                                     [--threads 1,default] [--structures DIR] [--only CODE,...]
                                     [--tsv FILE]
--baseline PATH also times another build on the same chains (e.g. the previous release), so
that both are measured in one run on the same machine state. --mode default runs with
secondary structure (DSSP as the tool finds it). Prints one line per chain and the totals;
exit status 1 when a report differs from the reference.
"""
import argparse
import csv
import os
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
REFERENCE = os.path.join(ROOT, "bench", "reference", "chains.tsv")


def run(tool, scratch, name, options, threads):
    env = dict(os.environ)
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
    options = ["-noss"] if args.mode == "noss" else []
    only = set(c for c in args.only.split(",") if c)
    runs = [("quarnel/" + t, os.path.abspath(args.tool), t) for t in args.threads.split(",")]
    if args.baseline:
        runs.insert(0, ("baseline", os.path.abspath(args.baseline), "1"))

    with open(REFERENCE, newline="") as handle:
        rows = [r for r in csv.DictReader(handle, delimiter="\t", quoting=csv.QUOTE_NONE)
                if not only or r["file"][:-4] in only]
    totals = {label: 0.0 for label, _, _ in runs}
    differences = 0
    table = []
    print("%-7s %6s  %s" % ("chain", "res", "  ".join("%12s" % label for label, _, _ in runs)))
    for row in rows:
        code = row["file"][:-4]
        scratch = tempfile.mkdtemp(prefix="quarnel-speed.")
        try:
            os.mkdir(os.path.join(scratch, "pdb"))
            shutil.copy(os.path.join(args.structures, code + ".pdb"),
                        os.path.join(scratch, "pdb", code + ".pdb"))
            expected = (int(row["noss_status" if args.mode == "noss" else "default_status"]),
                        row["noss" if args.mode == "noss" else "default"].replace("\\", ""))
            times = []
            for label, tool, threads in runs:
                status, report, elapsed = run(tool, scratch, code + row["chain"], options, threads)
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
    print("%-14s  %s" % ("total seconds", "  ".join("%12.2f" % totals[l] for l, _, _ in runs)))
    if args.baseline:
        base = totals["baseline"]
        print("%-14s  %s" % ("speed-up", "  ".join(
            "%12.2f" % (base / totals[l]) if totals[l] > 0 else "-" for l, _, _ in runs)))
    if args.tsv:
        with open(args.tsv, "w", newline="") as handle:
            writer = csv.writer(handle, delimiter="\t")
            writer.writerow(["chain", "residues"] + [l for l, _, _ in runs])
            writer.writerows(table)
    print("%d chains, %d reports differ" % (len(rows), differences))
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main())
