#!/usr/bin/env python3
"""Per-chain benchmark: every protein chain of a structure folder, selected the way users select
one (a PDB code with its chain letter and -pdbpath), run by default, by the probe (the partition
before the confidence assessment) and with -noss. Writes bench/results/chains.tsv and prints a
summary: the verdicts of the assessment and the median and maximum seconds per chain and per 100
residues.

Usage: python3 bench/chains.py [--structures DIR] [--manifest FILE] [--build DIR] [--out DIR]
                               [--only CODE[,CODE...]] [--relaxed]
--relaxed also runs "-noss -md 3" (the relaxed partition into at most three domains).
"""
import argparse
import csv
import os
import shutil
import statistics
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
MEASURE = os.path.join(ROOT, "bench", "measure.py")
ADAPTER = os.path.join(ROOT, "tools", "quarnel-dssp")


def protein_chains(row):
    """(chain, residues) of the row's protein chains: the manifest names nucleic-acid chains in
    its notes ("nucleic-acid chain(s) DE")."""
    nucleic = set()
    for note in row["notes"].split(";"):
        note = note.strip()
        if note.startswith("nucleic-acid chain(s)"):
            nucleic.update(note.split()[-1])
    chains = []
    for item in row["residues_per_chain"].split(","):
        chain, residues = item.split(":")
        if chain not in nucleic:
            chains.append((chain, int(residues)))
    return chains


def measured_run(command, cwd, timeout):
    out = os.path.join(cwd, "run.out")
    err = os.path.join(cwd, "run.err")
    result = subprocess.run(
        [sys.executable, MEASURE, "--cwd", cwd, "--stdout", out, "--stderr", err,
         "--timeout", str(timeout), "--"] + command,
        capture_output=True, text=True, check=True)
    status, seconds, peak = result.stdout.split("\t")
    with open(out, errors="replace") as handle:
        lines = [l.rstrip("\n") for l in handle if l.count("\t") >= 2]
    report = lines[-1] if lines else ""
    message = ""
    if int(status) != 0 or not report:
        with open(err, errors="replace") as handle:
            message = handle.read().strip().split("\n")[0][:200]
        if not message:
            with open(out, errors="replace") as handle:
                message = handle.read().strip().split("\n")[0][:200]
    return int(status), float(seconds), int(peak), report, message


def domains_of(report):
    fields = report.split("\t")
    return int(fields[2]) if len(fields) >= 3 and fields[2].isdigit() else None


def verdict(before, final, status, residues):
    if status != 0:
        return "failed"
    first, last = domains_of(before), domains_of(final)
    if first is None or last is None:
        return "failed"
    if first == 1:
        if residues < 70:
            return "one domain: under 70 residues, never searched"
        return "one domain: no acceptable cut"
    if last == first:
        return "accepted at first"
    if last == 1:
        return "rejected down to one domain (%d merges)" % (first - 1)
    return "accepted after %d merge%s" % (first - last, "s" if first - last > 1 else "")


def run_chain(path, code, chain, args, timeout):
    scratch = tempfile.mkdtemp(prefix="quarnel-chain.")
    try:
        os.mkdir(os.path.join(scratch, "pdb"))
        shutil.copy(path, os.path.join(scratch, "pdb", code + ".pdb"))
        name = code + chain
        env_dssp = "'" + ADAPTER.replace("'", "'\\''") + "'"
        os.environ["DSSP_PATH"] = env_dssp
        row = {}
        for mode, tool, extra in (("default", args.quarnel, []), ("before", args.probe, []),
                                  ("noss", args.quarnel, ["-noss"])) + (
                                      (("relaxed3", args.quarnel, ["-noss", "-md", "3"]),)
                                      if args.relaxed else ()):
            status, seconds, peak, report, message = measured_run(
                [tool] + extra + ["-pdbpath", "pdb/", name], scratch, timeout)
            row[mode] = (status, seconds, peak, report, message)
        return row
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


def summary(rows):
    lines = []
    verdicts = {}
    for row in rows:
        key = row["verdict"].split(" (")[0]
        if key.startswith("accepted after"):
            key = "accepted after merging"
        verdicts[key] = verdicts.get(key, 0) + 1
    lines.append("chains: %d" % len(rows))
    for key in sorted(verdicts):
        lines.append("  %-40s %d" % (key, verdicts[key]))
    for mode in ("default", "noss", "relaxed3"):
        done = [r for r in rows if r.get(mode + "_status") == "0"]
        if not done:
            continue
        seconds = [float(r[mode + "_seconds"]) for r in done]
        per100 = [100.0 * float(r[mode + "_seconds"]) / int(r["residues"]) for r in done]
        peaks = [int(r[mode + "_peak_kb"]) for r in done]
        lines.append("%-8s ok %d/%d  s/chain median %.3f max %.3f  s/100 res median %.3f max "
                     "%.3f  peak MB max %.0f" % (mode, len(done), len(rows),
                                                 statistics.median(seconds), max(seconds),
                                                 statistics.median(per100), max(per100),
                                                 max(peaks) / 1024.0))
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--structures", default=os.path.join(ROOT, "..", "shared", "data",
                                                             "structures"))
    parser.add_argument("--manifest", default=None)
    parser.add_argument("--build", default=os.path.join(ROOT, "build"))
    parser.add_argument("--out", default=os.path.join(ROOT, "bench", "results"))
    parser.add_argument("--only", default="")
    parser.add_argument("--timeout", type=float, default=1800.0)
    parser.add_argument("--relaxed", action="store_true")
    args = parser.parse_args()
    args.quarnel = os.path.join(os.path.abspath(args.build), "quarnel")
    args.probe = os.path.join(os.path.abspath(args.build), "quarnel_probe")
    if not os.path.exists(args.probe):
        subprocess.run(["cmake", "--build", os.path.abspath(args.build), "--target", "quarnel_probe"],
                       check=True, capture_output=True)
    manifest = args.manifest or os.path.join(args.structures, "..", "MANIFEST.tsv")
    only = set(c for c in args.only.split(",") if c)

    with open(manifest, newline="") as handle:
        entries = [r for r in csv.DictReader(handle, delimiter="\t")
                   if r["file"].startswith("structures/")]
    os.makedirs(args.out, exist_ok=True)
    columns = ["file", "chain", "residues", "verdict", "before", "default"]
    for mode in ("default", "before", "noss") + (("relaxed3",) if args.relaxed else ()):
        columns += [mode + "_status", mode + "_seconds", mode + "_peak_kb"]
    columns += ["noss"] + (["relaxed3"] if args.relaxed else []) + ["message"]
    rows = []
    for entry in entries:
        path = os.path.join(args.structures, os.path.basename(entry["file"]))
        code = os.path.basename(entry["file"])[:-4]
        if only and code not in only:
            continue
        for chain, residues in protein_chains(entry):
            if not chain.isalpha() or not chain.isupper():
                continue  # the code path selects upper-case chain letters only
            result = run_chain(path, code, chain, args, args.timeout)
            flat = lambda report: report.replace("\t", " ")
            row = {"file": code + ".pdb", "chain": chain, "residues": residues,
                   "before": flat(result["before"][3]), "default": flat(result["default"][3]),
                   "noss": flat(result["noss"][3]),
                   "message": result["default"][4] or result["noss"][4]}
            if args.relaxed:
                row["relaxed3"] = flat(result["relaxed3"][3])
            for mode, values in result.items():
                row[mode + "_status"] = str(values[0])
                row[mode + "_seconds"] = "%.3f" % values[1]
                row[mode + "_peak_kb"] = str(values[2])
            row["verdict"] = verdict(result["before"][3], result["default"][3],
                                     result["default"][0], residues)
            rows.append(row)
            print("%s%s %d res: %s  [%s s]" % (code, chain, residues, row["verdict"],
                                               row["default_seconds"]), file=sys.stderr)
    with open(os.path.join(args.out, "chains.tsv"), "w", newline="") as handle:
        writer = csv.DictWriter(handle, fieldnames=columns, delimiter="\t",
                                quoting=csv.QUOTE_NONE, escapechar="\\", extrasaction="ignore")
        writer.writeheader()
        writer.writerows(rows)
    text = summary(rows)
    with open(os.path.join(args.out, "chains_summary.txt"), "w") as handle:
        handle.write(text + "\n")
    print(text)


if __name__ == "__main__":
    main()
