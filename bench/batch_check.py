#!/usr/bin/env python3
"""Batch runs against single runs, over every structure file of the shared data (structures and
formats): one batch with --each-chain, -j 2, TSV and JSON Lines, every row compared with the
classic report of the same chain, then an interrupted batch resumed.

Single runs: bench/reference/chains.tsv (the classic code path, default mode, made with mkdssp)
where it has the chain, else a run of `quarnel --chain ID file` on its own. A row equals its
single run when the number of domains and the domains (each a set of segments, in any order)
are the same.

Usage: python3 bench/batch_check.py [--tool PATH] [--data DIR] [--jobs N] [--kill-after S]
Prints the figures (chains, seconds, chains per second) and every difference; exit status 1 when
anything differs or the resumed run recomputed a chain.
"""
import argparse
import csv
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
REFERENCE = os.path.join(ROOT, "bench", "reference", "chains.tsv")


def classic_domains(report):
    """The domains of a classic report line, each a frozenset of 'a-b' segments."""
    fields = report.split("\t") if "\t" in report else report.split(" ", 3)
    if len(fields) < 3:
        return None
    ndom = int(fields[2])
    if ndom == 1:
        return 1, None
    groups = re.findall(r"\(([^)]*)\)", report)
    return ndom, sorted(sorted(g.split(";")) for g in groups)


def chopping_domains(ndom, chopping):
    if ndom == 1:
        return 1, None
    return ndom, sorted(sorted(d.split("_")) for d in chopping.split(","))


def run(argv, env=None, timeout=None):
    return subprocess.run(argv, capture_output=True, text=True, env=env, timeout=timeout)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", default=os.path.join(ROOT, "build", "quarnel"))
    parser.add_argument("--data", default=os.path.join(ROOT, "..", "shared", "data"))
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--kill-after", type=float, default=3.0)
    args = parser.parse_args()
    tool = os.path.abspath(args.tool)
    env = dict(os.environ)
    env.pop("DSSP_PATH", None)

    with open(REFERENCE, newline="") as handle:
        reference = {r["file"][:-4] + r["chain"]: r["default"].replace("\\", "")
                     for r in csv.DictReader(handle, delimiter="\t", quoting=csv.QUOTE_NONE)}

    scratch = tempfile.mkdtemp(prefix="quarnel-batch.")
    problems = 0
    try:
        inputs = [os.path.join(args.data, "structures"), os.path.join(args.data, "formats")]
        rows = {}
        for fmt in ("json", "tsv"):
            out = os.path.join(scratch, "all." + fmt)
            started = time.monotonic()
            done = run([tool, "--each-chain", "-j", str(args.jobs), "--format", fmt, "--out", out]
                       + inputs, env)
            seconds = time.monotonic() - started
            with open(out) as handle:
                handle.readline()  # the line recording the options
                if fmt == "json":
                    rows["json"] = [json.loads(l) for l in handle]
                else:
                    rows["tsv"] = list(csv.DictReader(handle, delimiter="\t"))
            failed = [l for l in done.stderr.splitlines() if "skipped" not in l]
            print("%s: %d chains in %.1f s, %.1f chains/s, status %d, %d stderr lines besides "
                  "skipped chains" % (fmt, len(rows[fmt]), seconds, len(rows[fmt]) / seconds,
                                      done.returncode, len(failed)))
            for line in failed[:20]:
                print("  " + line)
        # The TSV rows are the JSON lines, in the same order.
        if [(r["chain_id"], len(r["domains"]), ",".join(d["chopping"] for d in r["domains"]))
                for r in rows["json"]] != [(r["chain_id"], int(r["ndom"]), r["chopping"])
                                            for r in rows["tsv"]]:
            problems += 1
            print("TSV and JSON Lines differ")
        keys = [(r["file"], r["chain"]) for r in rows["json"]]
        if len(set(keys)) != len(keys):
            problems += 1
            print("a chain of a file is reported twice")

        # Each row against the single run of its chain.
        singles = 0
        for item in rows["json"]:
            entry = item["chain_id"]
            ndom = len(item["domains"])
            chopping = ",".join(d["chopping"] for d in item["domains"])
            from_structures = os.path.dirname(item["file"]) == inputs[0]
            expected = reference.get(entry) if from_structures else None
            if expected is None:
                single = run([tool, "--chain", item["chain"], item["file"]], env)
                expected = single.stdout.strip()
                singles += 1
            if classic_domains(expected) != chopping_domains(ndom, chopping):
                problems += 1
                print("DIFF %s %s: single %r, batch %d %s" % (item["file"], item["chain"],
                                                              expected, ndom, chopping))
        print("%d rows compared (%d with a single run of their own), %d differ" %
              (len(rows["json"]), singles, problems))

        # An interrupted batch, resumed.
        # (Chain ids identify the chains on file: the structures folder, whose names are unique.)
        out = os.path.join(scratch, "resumed.tsv")
        inputs = inputs[:1]
        whole = [r["chain_id"] for r in rows["json"] if os.path.dirname(r["file"]) == inputs[0]]
        first = subprocess.Popen([tool, "--each-chain", "-j", str(args.jobs), "--format", "tsv",
                                  "--out", out] + inputs, env=env, stderr=subprocess.DEVNULL)
        time.sleep(args.kill_after)
        first.send_signal(signal.SIGKILL)
        first.wait()
        with open(out) as handle:
            before = [l for l in handle.read().split("\n")[2:] if l and "\t" in l]
        second = run([tool, "--each-chain", "-j", str(args.jobs), "--format", "tsv", "--out", out,
                      "--resume"] + inputs, env)
        with open(out) as handle:
            handle.readline()  # the line recording the options
            after = list(csv.DictReader(handle, delimiter="\t"))
        ids = [r["chain_id"] for r in after]
        recomputed = len(ids) - len(set(ids))
        complete = sorted(ids) == sorted(whole)
        print("resume: %d chains on file when killed, %d after resuming, %d computed twice, "
              "complete %s, status %d" % (len(before), len(set(ids)), recomputed, complete,
                                         second.returncode))
        if recomputed or not complete:
            problems += 1
    finally:
        shutil.rmtree(scratch, ignore_errors=True)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
