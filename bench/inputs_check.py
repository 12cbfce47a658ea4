#!/usr/bin/env python3
"""The inputs users have, end to end: every structure of the shared data converted by gemmi to
mmCIF, and gzip of both, read with --chain for every chain and with --each-chain, against the
classic code path on the PDB file (bench/reference/chains.tsv).

For every chain of the reference and every form (.cif, .cif.gz, .pdb.gz), `quarnel --chain C
<form>` must print exactly the reference's report line (the entry is the file's base name and
the chain, as the code path names it); and each file's --each-chain run must give the same lines
as its --chain runs.

Usage: python3 bench/inputs_check.py [--tool PATH] [--probe PATH] [--structures DIR]
                                     [--mode noss|default] [--only CODE,...]
--mode noss (the default) compares with the reference's -noss lines; default compares with its
default lines, secondary structure from the built-in DSSP. Prints the counts and every
difference; exit status 1 when anything differs.
"""
import argparse
import csv
import gzip
import os
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
REFERENCE = os.path.join(ROOT, "bench", "reference", "chains.tsv")


def report(stdout):
    lines = [l for l in stdout.split("\n") if l.count("\t") >= 2]
    return lines[-1].replace("\t", " ") if lines else ""


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", default=os.path.join(ROOT, "build", "quarnel"))
    parser.add_argument("--probe", default=os.path.join(ROOT, "build", "formats_probe"))
    parser.add_argument("--structures",
                        default=os.path.join(ROOT, "..", "shared", "data", "structures"))
    parser.add_argument("--mode", choices=("noss", "default"), default="noss")
    parser.add_argument("--only", default="")
    args = parser.parse_args()
    only = set(c for c in args.only.split(",") if c)
    if not os.path.exists(args.probe):
        subprocess.run(["cmake", "--build", os.path.dirname(args.probe), "--target", "formats_probe"],
                       check=True, capture_output=True)
    options = ["-noss"] if args.mode == "noss" else ["--dssp", "builtin"]
    env = dict(os.environ)
    env.pop("DSSP_PATH", None)

    chains = {}
    with open(REFERENCE, newline="") as handle:
        for row in csv.DictReader(handle, delimiter="\t", quoting=csv.QUOTE_NONE):
            code = row["file"][:-4]
            if not only or code in only:
                chains.setdefault(code, []).append((row["chain"], row[args.mode].replace("\\", "")))

    scratch = tempfile.mkdtemp(prefix="quarnel-inputs.")
    runs = differences = 0
    started = time.monotonic()
    try:
        for code, expected in sorted(chains.items()):
            folder = os.path.join(scratch, code)
            os.mkdir(folder)
            pdb = os.path.join(args.structures, code + ".pdb")
            cif = os.path.join(folder, code + ".cif")
            subprocess.run([args.probe, "to-mmcif", pdb, cif], check=True, capture_output=True)
            forms = [cif]
            for source, name in ((cif, code + ".cif.gz"), (pdb, code + ".pdb.gz")):
                with open(source, "rb") as raw, gzip.open(os.path.join(folder, name), "wb") as out:
                    shutil.copyfileobj(raw, out)
                forms.append(os.path.join(folder, name))
            for form in forms:
                lines = {}
                for chain, line in expected:
                    result = subprocess.run([args.tool] + options + ["--chain", chain, form],
                                            capture_output=True, text=True, env=env)
                    runs += 1
                    lines[chain] = report(result.stdout)
                    if lines[chain] != line:
                        differences += 1
                        print("DIFF %s --chain %s: expected %r, got %r (%s)" %
                              (os.path.basename(form), chain, line, lines[chain],
                               result.stderr.strip()[:200]))
                each = subprocess.run([args.tool] + options + ["--each-chain", form],
                                      capture_output=True, text=True, env=env)
                runs += 1
                got = {l.split("\t")[0][len(code):]: l.replace("\t", " ")
                       for l in each.stdout.split("\n") if l.count("\t") >= 2}
                for chain, line in lines.items():
                    if got.get(chain) != line:
                        differences += 1
                        print("DIFF %s --each-chain, chain %s: %r, --chain gave %r" %
                              (os.path.basename(form), chain, got.get(chain), line))
            shutil.rmtree(folder)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)
    print("%d entries, %d chains, %d runs in %.0f s, %d differ" %
          (len(chains), sum(len(c) for c in chains.values()), runs, time.monotonic() - started,
           differences))
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main())
