#!/usr/bin/python3
"""Accuracy of quarnel's choppings against reference ones (CATH), in both modes side by side.

For every row of a truth file (file, chain, source, number_of_domains, boundaries; the format of
../shared/data/truth.tsv) quarnel is run on that chain as a user runs it, one process per chain
(`quarnel --format tsv --chain C FILE`, plus `--mode M`), and its chopping is scored against the
reference over the chain's residues (read with gemmi): domain-count accuracy with the over- and
under-cut rates, single- and multi-domain chains apart; mean NDO; the CASP boundary distance
score; reference boundaries met within +-20 residues; and the time per chain (the run's own
time_sec and the process's wall time). The scores are defined in bench/domain_scores.py.

Usage: /usr/bin/python3 bench/accuracy.py [--truth FILE ...] [--modes classic,cath]
           [--quarnel build/quarnel] [--jobs 2] [--rows OUT.tsv] [--option=-noss ...]
Writes per-chain rows to --rows (default bench/results/accuracy_rows.tsv) and prints the summary.
"""
import argparse
import concurrent.futures
import csv
import gzip
import os
import statistics
import subprocess
import sys
import time

import gemmi

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import domain_scores as ds  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SHARED = os.path.join(os.path.dirname(ROOT), "shared", "data")
DEFAULT_TRUTHS = [os.path.join(SHARED, "truth.tsv"), os.path.join(SHARED, "cath", "truth.tsv")]


def truth_base(path):
    """Files in a truth file are named relative to its folder, or, in the older layout of
    ../shared/data/truth.tsv, to the folder above it ("data/structures/...")."""
    folder = os.path.dirname(os.path.abspath(path))
    return folder


def resolve(base, name):
    direct = os.path.join(base, name)
    if os.path.exists(direct):
        return direct
    return os.path.join(os.path.dirname(base), name)


def chain_residues(path, chain):
    """The chain's residues in the first model, in file order, named as quarnel names them:
    those with ATOM records, and HETATM residues with a CA (modified amino acids such as MSE),
    which lie inside a domain's ranges. PDB records are read by column (gemmi refuses some real
    files over stray text in the charge column); mmCIF through gemmi."""
    opener = gzip.open if path.endswith(".gz") else open
    with opener(path, "rt", errors="replace") as handle:
        text = handle.read()
    if text.lstrip().startswith("data_"):
        structure = gemmi.read_structure(path)
        for candidate in structure[0]:
            if candidate.name == chain:
                return ["%d%s" % (r.seqid.num, r.seqid.icode.strip()) for r in candidate
                        if not r.is_water() and (r.het_flag == "A" or r.find_atom("CA", "*"))]
        raise ValueError("no chain %s in %s" % (chain, path))
    names, seen = [], set()
    for line in text.splitlines():
        if line.startswith("ENDMDL"):
            break
        record = line[:6]
        if record not in ("ATOM  ", "HETATM") or line[21:22] != chain:
            continue
        if record == "HETATM" and line[12:16] != " CA ":
            continue
        key = line[22:27]
        if key not in seen:
            seen.add(key)
            names.append("%d%s" % (int(line[22:26]), line[26:27].strip()))
    if not names:
        raise ValueError("no chain %s in %s" % (chain, path))
    return names


def run_quarnel(tool, path, chain, mode, extra):
    command = [tool, "--format", "tsv", "--chain", chain] + extra
    if mode != "classic":
        command += ["--mode", mode]
    command.append(path)
    started = time.monotonic()
    done = subprocess.run(command, capture_output=True, text=True)
    wall = time.monotonic() - started
    rows = [line.split("\t") for line in done.stdout.splitlines() if line and not line.startswith("#")]
    if done.returncode != 0 or len(rows) < 2:
        return {"status": done.returncode, "error": done.stderr.strip()[:200], "wall": wall}
    row = dict(zip(rows[0], rows[1]))
    return {"status": 0, "chopping": row.get("chopping", ""),
            "seconds": float(row.get("time_sec", row.get("time_s", "nan"))), "wall": wall}


def score_chain(truth, tool, modes, extra):
    residues = chain_residues(truth["path"], truth["chain"])
    reference = ds.reference_labels(residues, truth["domains"])
    scored = {"file": truth["file"], "chain": truth["chain"], "ref_ndom": truth["ndom"],
              "nres": len(residues)}
    for mode in modes:
        run = run_quarnel(tool, truth["path"], truth["chain"], mode, extra)
        if run["status"] != 0:
            scored[mode] = {"error": run.get("error", ""), "wall": run["wall"]}
            continue
        predicted = ds.predicted_labels(residues, ds.parse_chopping(run["chopping"]))
        hits, boundaries = ds.boundary_hits(reference, predicted)
        scored[mode] = {"chopping": run["chopping"], "ndom": ds.domain_count(predicted),
                        "ndo": ds.ndo(reference, predicted),
                        "dbd": ds.boundary_distance_score(reference, predicted),
                        "hits": hits, "boundaries": boundaries,
                        "seconds": run["seconds"], "wall": run["wall"]}
    return scored


def summary(rows, mode):
    scored = [r for r in rows if "error" not in r[mode]]
    multi = [r for r in scored if r["ref_ndom"] > 1]
    single = [r for r in scored if r["ref_ndom"] == 1]

    def share(chosen, test):
        return sum(1 for r in chosen if test(r)) / len(chosen) if chosen else float("nan")

    right = lambda r: r[mode]["ndom"] == r["ref_ndom"]  # noqa: E731
    return {
        "chains": len(scored), "failed": len(rows) - len(scored),
        "count": share(scored, right), "multi": share(multi, right), "single": share(single, right),
        "single_over": share(single, lambda r: r[mode]["ndom"] > 1),
        "multi_under": share(multi, lambda r: r[mode]["ndom"] < r["ref_ndom"]),
        "multi_over": share(multi, lambda r: r[mode]["ndom"] > r["ref_ndom"]),
        "ndo": statistics.mean(r[mode]["ndo"] for r in scored) if scored else float("nan"),
        "dbd": statistics.mean(r[mode]["dbd"] for r in scored) if scored else float("nan"),
        "hits": sum(r[mode]["hits"] for r in scored),
        "boundaries": sum(r[mode]["boundaries"] for r in scored),
        "median_s": statistics.median(r[mode]["seconds"] for r in scored) if scored else float("nan"),
        "median_wall": statistics.median(r[mode]["wall"] for r in scored) if scored else float("nan"),
        "total_wall": sum(r[mode]["wall"] for r in scored),
    }


TABLE = [("chains", "chains scored", "%d"), ("failed", "runs failed", "%d"),
         ("count", "domain-count accuracy", "%.3f"), ("multi", "  multi-domain chains", "%.3f"),
         ("single", "  single-domain chains", "%.3f"),
         ("single_over", "single-domain chains over-cut", "%.3f"),
         ("multi_under", "multi-domain chains under-cut", "%.3f"),
         ("multi_over", "multi-domain chains over-cut", "%.3f"), ("ndo", "mean NDO", "%.3f"),
         ("dbd", "boundary distance score", "%.3f"), ("hits", "boundaries within +-20", "%d"),
         ("median_s", "median seconds per chain (run)", "%.3f"),
         ("median_wall", "median seconds per chain (process)", "%.3f"),
         ("total_wall", "seconds in all (processes)", "%.1f")]


def print_summary(title, rows, modes):
    print("## %s (%d chains: %d single-domain, %d multi-domain)" % (
        title, len(rows), sum(1 for r in rows if r["ref_ndom"] == 1),
        sum(1 for r in rows if r["ref_ndom"] > 1)))
    print("| | " + " | ".join(modes) + " |")
    print("|---|" + "---|" * len(modes))
    sums = {mode: summary(rows, mode) for mode in modes}
    for key, label, form in TABLE:
        cells = []
        for mode in modes:
            value = sums[mode][key]
            if key == "hits":
                cells.append("%d/%d" % (value, sums[mode]["boundaries"]))
            else:
                cells.append(form % value)
        print("| %s | %s |" % (label, " | ".join(cells)))
    print()


def write_rows(path, rows, modes):
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    with open(path, "w", newline="") as handle:
        out = csv.writer(handle, delimiter="\t", lineterminator="\n")
        header = ["set", "file", "chain", "nres", "ref_ndom"]
        for mode in modes:
            header += ["%s_%s" % (mode, c) for c in ("ndom", "ndo", "dbd", "hits", "seconds", "chopping")]
        out.writerow(header)
        for r in rows:
            line = [r["set"], r["file"], r["chain"], r["nres"], r["ref_ndom"]]
            for mode in modes:
                m = r[mode]
                if "error" in m:
                    line += ["NULL"] * 5 + ["error: " + m["error"]]
                else:
                    line += [m["ndom"], "%.4f" % m["ndo"], "%.4f" % m["dbd"],
                             "%d/%d" % (m["hits"], m["boundaries"]), "%.4f" % m["seconds"], m["chopping"]]
            out.writerow(line)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--truth", action="append", help="truth file (repeatable)")
    parser.add_argument("--modes", default="classic,cath")
    parser.add_argument("--quarnel", default=os.path.join(ROOT, "build", "quarnel"))
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--rows", default=os.path.join(ROOT, "bench", "results", "accuracy_rows.tsv"))
    parser.add_argument("--option", action="append", default=[], help="extra quarnel argument")
    args = parser.parse_args()
    modes = args.modes.split(",")
    truths = []
    for path in args.truth or DEFAULT_TRUTHS:
        base = truth_base(path)
        for row in ds.read_truth(path):
            row["path"] = resolve(base, row["file"])
            row["set"] = os.path.relpath(path, os.path.dirname(SHARED)) if path.startswith(SHARED) else path
            truths.append(row)
    with concurrent.futures.ThreadPoolExecutor(args.jobs) as pool:
        futures = [pool.submit(score_chain, t, args.quarnel, modes, args.option) for t in truths]
        rows = []
        for truth, future in zip(truths, futures):
            row = future.result()
            row["set"] = truth["set"]
            rows.append(row)
    write_rows(args.rows, rows, modes)
    sets = sorted(set(r["set"] for r in rows))
    for name in sets:
        print_summary(name, [r for r in rows if r["set"] == name], modes)
    if len(sets) > 1:
        print_summary("all", rows, modes)


if __name__ == "__main__":
    main()
