#!/usr/bin/env python3
"""The Python module's chop_all against the batch run, over the shared structures: for each mode,
every judged result's TSV row equals the batch's row for row (time column aside), the failed
chains are the batch's failures, and both take about the same time.

Usage: /usr/bin/python3 bench/python_rows_check.py [--tool PATH] [--data DIR] [--jobs N]
           [--modes classic,cath]
Run with the system python3 and PYTHONPATH=build/python (or the module installed). Prints the
figures per mode; exit status 1 when a row differs.
"""
import argparse
import os
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "build", "python"))
import quarnel  # noqa: E402


def rows(text):
    kept = []
    for line in text.splitlines():
        if not line or line.startswith("#") or line.startswith("chain_id\t"):
            continue
        fields = line.split("\t")
        fields[6] = "T"
        kept.append("\t".join(fields))
    return kept


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", default=os.path.join(ROOT, "build", "quarnel"))
    parser.add_argument("--data", default=os.path.join(ROOT, "..", "shared", "data"))
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--modes", default="classic,cath")
    args = parser.parse_args()
    inputs = [os.path.join(args.data, name) for name in ("structures", "formats", os.path.join("cath", "structures"))
              if os.path.isdir(os.path.join(args.data, name))]
    env = {k: v for k, v in os.environ.items() if k != "DSSP_PATH"}
    differ = 0
    for mode in args.modes.split(","):
        started = time.monotonic()
        batch = subprocess.run([args.tool, "--quiet", "--format", "tsv", "--mode", mode, "-j", str(args.jobs),
                                *inputs], capture_output=True, text=True, env=env)
        batch_seconds = time.monotonic() - started
        started = time.monotonic()
        results = quarnel.chop_all(inputs, jobs=args.jobs, mode=mode)
        python_seconds = time.monotonic() - started
        expected = rows(batch.stdout)
        got = rows("".join(result.tsv_row for result in results if result.ok))
        failed = [result for result in results if not result.ok]
        # The batch's summary line: "quarnel: N of M chains failed".
        summary = [line for line in batch.stderr.splitlines() if line.endswith(" failed")]
        batch_failed = int(summary[-1].split()[1]) if summary else 0
        mismatched = sum(1 for a, b in zip(expected, got) if a != b) + abs(len(expected) - len(got)) + \
            abs(batch_failed - len(failed))
        differ += mismatched
        print("%s: %d rows from the batch, %d from chop_all, %d differ; %d chains not judged by chop_all "
              "(the batch: %d); batch %.1f s, chop_all %.1f s"
              % (mode, len(expected), len(got), mismatched, len(failed), batch_failed, batch_seconds,
                 python_seconds))
        for a, b in zip(expected, got):
            if a != b:
                print("  batch:    " + a + "\n  chop_all: " + b)
    return 1 if differ else 0


if __name__ == "__main__":
    sys.exit(main())
