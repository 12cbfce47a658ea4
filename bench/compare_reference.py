#!/usr/bin/env python3
"""Runs a built quarnel over every case of bench/reference and compares each report line and
exit status with the recorded one.

Cases: every chain of chains.tsv as a code with its chain letter (-pdbpath pdb/ 1abcA) in the
default mode, with -noss and with -noss -md 3; every file of default.tsv and noss.tsv named on
the command line. Each run happens in a scratch folder of its own, so runs can go in parallel.

Usage: python3 bench/compare_reference.py [--tool PATH] [--structures DIR] [--jobs N]
                                          [--modes default,noss,relaxed3,file-default,file-noss]
                                          [--dssp adapter|builtin] [--only CODE,...]
--dssp adapter (the default) sets DSSP_PATH to tools/quarnel-dssp, as the reference was made;
--dssp builtin leaves DSSP_PATH unset and adds "--dssp builtin" (a batch run of one input, with
DSSP's library inside quarnel); a batch run ends a failed input with status 3, which then
stands for the reference's failure status.
Prints one line per difference and a summary; exit status 1 when anything differs.
"""
import argparse
import concurrent.futures
import csv
import os
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
REFERENCE = os.path.join(ROOT, "bench", "reference")
ADAPTER = os.path.join(ROOT, "tools", "quarnel-dssp")
ALL_MODES = ("default", "noss", "relaxed3", "file-default", "file-noss")
OPTIONS = {"default": [], "noss": ["-noss"], "relaxed3": ["-noss", "-md", "3"],
           "file-default": [], "file-noss": ["-noss"]}


def report_line(stdout):
    """The last line with at least two tabs, tabs shown as blanks (as the reference keeps it)."""
    lines = [l for l in stdout.split("\n") if l.count("\t") >= 2]
    return lines[-1].replace("\t", " ") if lines else ""


def run_case(tool, structures, mode, code, chain, dssp, timeout):
    scratch = tempfile.mkdtemp(prefix="quarnel-ref.")
    try:
        env = dict(os.environ)
        env.pop("DSSP_PATH", None)
        if dssp == "adapter":
            env["DSSP_PATH"] = "'" + ADAPTER.replace("'", "'\\''") + "'"
        extra = ["--dssp", "builtin"] if dssp == "builtin" else []
        if mode.startswith("file"):
            shutil.copy(os.path.join(structures, code + ".pdb"), os.path.join(scratch, code + ".pdb"))
            argv = [tool] + extra + OPTIONS[mode] + [code + ".pdb"]
        else:
            os.mkdir(os.path.join(scratch, "pdb"))
            shutil.copy(os.path.join(structures, code + ".pdb"),
                        os.path.join(scratch, "pdb", code + ".pdb"))
            argv = [tool] + extra + OPTIONS[mode] + ["-pdbpath", "pdb/", code + chain]
        started = time.monotonic()
        try:
            result = subprocess.run(argv, cwd=scratch, env=env, capture_output=True,
                                    timeout=timeout)
            status = result.returncode
            stdout = result.stdout.decode(errors="replace")
        except subprocess.TimeoutExpired:
            status, stdout = 124, ""
        return status, report_line(stdout), time.monotonic() - started
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


def cases(modes, only):
    """(mode, code, chain, expected status, expected report) for every selected case."""
    with open(os.path.join(REFERENCE, "chains.tsv"), newline="") as handle:
        for row in csv.DictReader(handle, delimiter="\t", quoting=csv.QUOTE_NONE):
            code = row["file"][:-4]
            if only and code not in only:
                continue
            for mode in ("default", "noss", "relaxed3"):
                if mode in modes:
                    yield (mode, code, row["chain"], int(row[mode + "_status"]),
                           row[mode].replace("\\", ""))
    for mode, table in (("file-default", "default.tsv"), ("file-noss", "noss.tsv")):
        if mode not in modes:
            continue
        with open(os.path.join(REFERENCE, table), newline="") as handle:
            for row in csv.DictReader(handle, delimiter="\t", quoting=csv.QUOTE_NONE):
                code = row["file"][:-4]
                if only and code not in only:
                    continue
                yield (mode, code, "", int(row["status"]), row["report"])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", default=os.path.join(ROOT, "build", "quarnel"))
    parser.add_argument("--structures",
                        default=os.path.join(ROOT, "..", "shared", "data", "structures"))
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 2)
    parser.add_argument("--modes", default=",".join(ALL_MODES))
    parser.add_argument("--dssp", choices=("adapter", "builtin"), default="adapter")
    parser.add_argument("--only", default="")
    parser.add_argument("--timeout", type=float, default=1800.0)
    args = parser.parse_args()
    modes = set(args.modes.split(","))
    unknown = modes - set(ALL_MODES)
    if unknown:
        parser.error("unknown modes: " + ",".join(sorted(unknown)))
    tool = os.path.abspath(args.tool)
    only = set(c for c in args.only.split(",") if c)

    todo = list(cases(modes, only))
    differences = 0
    seconds = {}
    with concurrent.futures.ThreadPoolExecutor(max_workers=args.jobs) as pool:
        futures = {pool.submit(run_case, tool, args.structures, mode, code, chain, args.dssp,
                               args.timeout): (mode, code, chain, status, report)
                   for mode, code, chain, status, report in todo}
        for future in concurrent.futures.as_completed(futures):
            mode, code, chain, status, report = futures[future]
            got_status, got_report, elapsed = future.result()
            seconds[mode] = seconds.get(mode, 0.0) + elapsed
            if args.dssp == "builtin" and status != 0 and got_status == 3:
                got_status = status
            if got_status != status or got_report != report:
                differences += 1
                print("DIFF %-12s %s%s: expected [%d] %r, got [%d] %r" %
                      (mode, code, chain, status, report, got_status, got_report))
    for mode in ALL_MODES:
        if mode in seconds:
            print("%-12s %6.1f s in all" % (mode, seconds[mode]))
    print("%d cases, %d differ" % (len(todo), differences))
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main())
