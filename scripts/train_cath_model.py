#!/usr/bin/python3
"""Trains the model that decides quarnel's domains in the accuracy mode (--mode cath), prints its
cross-validated accuracy, and writes its constant tables to src/cath/model_tables.h.

1. Candidates. quarnel itself writes, for every chain of the truth files, the candidate tree of
   the accuracy mode with the features of every cut (`quarnel --mode cath --features FILE`).
2. Labels. The whole chain's cut should stand when CATH gives the chain two domains or more. A
   part's cut should stand when the part holds at least 20 residues, and half, of each of two
   CATH domains.
3. Models. Two boosted-tree classifiers (scikit-learn's GradientBoostingClassifier, fixed seed):
   one for the whole chain's cut, one for the cuts of its parts. A cut stands
   when the model's log-odds reach 0; the calls go from the top down, as quarnel makes them.
4. Cross-validation. Chains are split into five folds by PDB entry (chains of one entry stay
   together); each fold is decided by models trained on the other four, and the choppings are
   scored against CATH (bench/domain_scores.py). These are the figures to quote.
5. Confidence. Logistic calibrations, fitted on the cross-validated log-odds, turn them into the
   probability that a domain is one CATH domain (at least 80% of it in one CATH domain, and 80%
   of that domain in it) and that a boundary separates two CATH domains.
6. Tables. The models refitted on all chains and the calibrations, written as C++ constants.

Running it again on the same data with the same packages (Debian 12: python3-sklearn 1.2.1,
python3-numpy 1.24.2) writes the same file byte for byte.

Usage: /usr/bin/python3 scripts/train_cath_model.py [--quarnel build/quarnel] [--data ../shared/data]
           [--features FILE] [--out src/cath/model_tables.h] [--check] [--ceilings] [--noss-figures]
--features reads candidate trees written earlier instead of running quarnel; --check writes
nothing and fails when the tables on file differ from the ones trained; --noss-figures also
prints how the cross-validated models decide the chains when quarnel runs with -noss;
--ceilings prints the accuracy of the candidate cuts chosen by the CATH labels, and how often
the cross-validated whole-chain call alone is right.
"""
import argparse
import collections
import concurrent.futures
import json
import math
import os
import subprocess
import sys
import tempfile

import numpy as np
from sklearn.ensemble import GradientBoostingClassifier
from sklearn.linear_model import LogisticRegression
from sklearn.model_selection import GroupKFold

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "bench"))
import domain_scores as ds  # noqa: E402

FOLDS = 5
PRESENT_RESIDUES = 20    # a CATH domain is present in a part with this many residues ...
PRESENT_SHARE = 0.5      # ... and this share of its own
THRESHOLD = 0.0          # log-odds at which a cut stands
MATCH_SHARE = 0.8        # a domain matches a CATH domain with this overlap both ways
CALIBRATION_BOUND = 8.0  # log-odds beyond this add nothing to a confidence
# Small trees, slow learning and a random 70% of the samples for each tree: the training chains
# are few, and deeper or faster models fit them better without deciding held-out chains better.
WHOLE_CHAIN = dict(n_estimators=300, max_depth=2, learning_rate=0.03, subsample=0.7, random_state=0)
PART = dict(n_estimators=400, max_depth=2, learning_rate=0.02, subsample=0.7, min_samples_leaf=10,
            random_state=0)


# ---- Data --------------------------------------------------------------------------------

def truth_rows(data):
    rows = []
    for truth, name in ((os.path.join(data, "truth.tsv"), "truth.tsv"),
                        (os.path.join(data, "cath", "truth.tsv"), "cath/truth.tsv")):
        base = os.path.dirname(truth)
        for row in ds.read_truth(truth):
            path = os.path.join(base, row["file"])
            if not os.path.exists(path):
                path = os.path.join(os.path.dirname(base), row["file"])
            row.update(path=path, set=name, entry=os.path.basename(row["file"])[:4].lower())
            rows.append(row)
    return rows


def write_candidates(tool, row, extra=()):
    with tempfile.NamedTemporaryFile("r", suffix=".jsonl") as out:
        command = [tool, "--mode", "cath", *extra, "--features", out.name, "--format", "tsv",
                   "--chain", row["chain"], row["path"]]
        done = subprocess.run(command, capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError("%s: %s" % (" ".join(command), done.stderr.strip()))
        return json.loads(out.read())


def candidate_trees(args, rows, extra=()):
    if args.features and not extra:
        trees = {}
        with open(args.features) as handle:
            for line in handle:
                tree = json.loads(line)
                trees[(tree["file"], tree["chain"])] = tree
        return [trees[(row["path"], row["chain"])] for row in rows]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 2) as pool:
        return list(pool.map(lambda row: write_candidates(args.quarnel, row, extra), rows))


def members(node):
    return [i for first, last in node["residues"] for i in range(first, last + 1)]


class Chain:
    """One truth row with its candidate tree and the CATH label of every residue."""

    def __init__(self, row, tree):
        self.row, self.tree = row, tree
        self.nodes = tree["nodes"]
        for node in self.nodes:
            node["members"] = members(node)
        self.reference = ds.reference_labels(tree["residues"], row["domains"])
        self.sizes = collections.Counter(label for label in self.reference if label)

    def cut_nodes(self):
        return [k for k, node in enumerate(self.nodes) if node["cut"]]

    def should_cut(self, k):
        if k == 0:
            return int(self.row["ndom"] > 1)
        present = collections.Counter(self.reference[i] for i in self.nodes[k]["members"] if self.reference[i])
        return int(sum(1 for d, v in present.items()
                       if v >= PRESENT_RESIDUES and v >= PRESENT_SHARE * self.sizes[d]) >= 2)

    def decide(self, log_odds):
        """The calls as quarnel makes them: (domain nodes in chain order, kept cut nodes)."""
        reached, domains, kept = {0}, [], []
        for k, node in enumerate(self.nodes):
            if k not in reached:
                continue
            if node["cut"] and log_odds[k] >= THRESHOLD:
                kept.append(k)
                reached.update(node["children"])
            else:
                domains.append(k)
        domains.sort(key=lambda k: self.nodes[k]["members"][0])
        return domains, kept

    def labels(self, domains):
        labels = [0] * len(self.reference)
        for d, k in enumerate(domains, 1):
            for i in self.nodes[k]["members"]:
                labels[i] = d
        return labels

    def matches(self, k):
        """The domain is one CATH domain: 80% of its residues in CATH domains lie in one, which
        has 80% of its residues in it."""
        inside = collections.Counter(self.reference[i] for i in self.nodes[k]["members"] if self.reference[i])
        if not inside:
            return 0
        label, shared = inside.most_common(1)[0]
        return int(shared >= MATCH_SHARE * sum(inside.values()) and shared >= MATCH_SHARE * self.sizes[label])

    def separates(self, k):
        """The cut's two sides lie mostly in different CATH domains."""
        sides = []
        for child in self.nodes[k]["children"]:
            inside = collections.Counter(self.reference[i] for i in self.nodes[child]["members"] if self.reference[i])
            sides.append(inside.most_common(1)[0][0] if inside else 0)
        return int(sides[0] != sides[1] and 0 not in sides)


# ---- Models ------------------------------------------------------------------------------

def samples(chains, whole_chain):
    x, y, where = [], [], []
    for c, chain in enumerate(chains):
        for k in chain.cut_nodes():
            if (k == 0) != whole_chain:
                continue
            x.append(chain.nodes[k]["features"])
            y.append(chain.should_cut(k))
            where.append((c, k))
    return np.array(x, dtype=np.float32), np.array(y), where


def fit(x, y, settings):
    model = GradientBoostingClassifier(**settings)
    model.fit(x, y)
    return model


def cross_validated_log_odds(chains, decided=None):
    """Each fold's chains decided by models trained on the others; `decided`, the same chains
    as candidate trees of another run (-noss), is what those models then decide."""
    decided = decided or chains
    groups = sorted(set(chain.row["entry"] for chain in chains))
    group_of = np.array([groups.index(chain.row["entry"]) for chain in chains])
    log_odds = [dict() for _ in chains]
    folds = GroupKFold(FOLDS).split(np.zeros(len(chains)), groups=group_of)
    for train, test in folds:
        train_chains = [chains[c] for c in train]
        test_chains = [(c, decided[c]) for c in test]
        for whole_chain, settings in ((True, WHOLE_CHAIN), (False, PART)):
            x, y, _ = samples(train_chains, whole_chain)
            model = fit(x, y, settings)
            for c, chain in test_chains:
                ks = [k for k in chain.cut_nodes() if (k == 0) == whole_chain]
                if ks:
                    raw = model.decision_function(np.array([chain.nodes[k]["features"] for k in ks], dtype=np.float32))
                    for k, value in zip(ks, raw):
                        log_odds[c][k] = float(value)
    return log_odds


def bounded(value):
    return max(-CALIBRATION_BOUND, min(CALIBRATION_BOUND, value))


def calibration_samples(chains, log_odds):
    domains, boundaries = [], []
    for chain, odds in zip(chains, log_odds):
        chosen, kept = chain.decide(odds)
        for k in chosen:
            node = chain.nodes[k]
            undivided = -bounded(odds[k]) if node["cut"] else CALIBRATION_BOUND
            apart = CALIBRATION_BOUND if node["parent"] < 0 else bounded(odds[node["parent"]])
            domains.append(([undivided, apart], chain.matches(k)))
        for k in kept:
            boundaries.append(([bounded(odds[k])], chain.separates(k)))
    return domains, boundaries


def fit_calibration(pairs):
    x = np.array([p[0] for p in pairs])
    y = np.array([p[1] for p in pairs])
    model = LogisticRegression(C=1.0)
    model.fit(x, y)
    return model, x, y


def print_ceilings(chains, log_odds):
    """Where the accuracy is lost. The candidate cuts chosen by the CATH labels themselves bound
    what any model deciding them can reach; the whole chain's call alone (one per chain) bounds
    the count accuracy from the other side."""
    oracle = [{k: 1.0 if chain.should_cut(k) else -1.0 for k in chain.cut_nodes()} for chain in chains]
    print("The candidate cuts kept or undone by the CATH labels (the best any model can do with them):")
    print_figures(score_rows(chains, oracle))
    right = sum(1 for chain, odds in zip(chains, log_odds)
                if (chain.nodes[0]["cut"] and odds.get(0, -1.0) >= THRESHOLD) == (chain.row["ndom"] > 1))
    print("The whole chain's call (one or more domains), cross-validated: %d of %d right (%.3f)" % (
        right, len(chains), right / len(chains)))


# ---- Reports -----------------------------------------------------------------------------

def score_rows(chains, log_odds):
    rows = []
    for chain, odds in zip(chains, log_odds):
        domains, _ = chain.decide(odds)
        predicted = chain.labels(domains)
        hits, total = ds.boundary_hits(chain.reference, predicted)
        rows.append(dict(set=chain.row["set"], ref=chain.row["ndom"], pred=ds.domain_count(predicted),
                         ndo=ds.ndo(chain.reference, predicted),
                         dbd=ds.boundary_distance_score(chain.reference, predicted), hits=hits, total=total))
    return rows


def print_figures(rows):
    print("| chains | count accuracy | multi-domain | single-domain | single over-cut | multi under-cut "
          "| mean NDO | boundary distance | boundaries +-20 |")
    print("|---|---|---|---|---|---|---|---|---|")
    for name in ("truth.tsv", "cath/truth.tsv", "all"):
        chosen = [r for r in rows if name == "all" or r["set"] == name]
        multi = [r for r in chosen if r["ref"] > 1]
        single = [r for r in chosen if r["ref"] == 1]
        share = lambda rs, test: sum(1 for r in rs if test(r)) / len(rs)  # noqa: E731
        print("| %s (%d) | %.3f | %.3f | %.3f | %.3f | %.3f | %.3f | %.3f | %d/%d |" % (
            name, len(chosen), share(chosen, lambda r: r["pred"] == r["ref"]),
            share(multi, lambda r: r["pred"] == r["ref"]), share(single, lambda r: r["pred"] == r["ref"]),
            share(single, lambda r: r["pred"] > 1), share(multi, lambda r: r["pred"] < r["ref"]),
            sum(r["ndo"] for r in chosen) / len(chosen), sum(r["dbd"] for r in chosen) / len(chosen),
            sum(r["hits"] for r in chosen), sum(r["total"] for r in chosen)))


def print_reliability(title, model, x, y):
    p = model.predict_proba(x)[:, 1]
    print("%s: calls %d; by predicted probability: " % (title, len(y)) + ", ".join(
        "%.1f-%.1f: %d calls, %.2f right" % (lo, lo + 0.2, m.sum(), y[m].mean())
        for lo in (0.0, 0.2, 0.4, 0.6, 0.8)
        for m in [(p >= lo) & ((p < lo + 0.2) if lo < 0.8 else (p <= 1.0))] if m.sum()))


# ---- Tables ------------------------------------------------------------------------------

def number(value):
    text = repr(float(value))
    return text if ("e" in text or "." in text or "inf" in text or "nan" in text) else text + ".0"


def tree_tables(models):
    """Nodes of every tree of the models, in one table; each model as its first root, its count
    and its initial log-odds."""
    nodes, roots, spans = [], [], []
    for model in models:
        first_root = len(roots)
        for estimator in model.estimators_[:, 0]:
            tree = estimator.tree_
            base = len(nodes)
            roots.append(base)
            for k in range(tree.node_count):
                leaf = tree.children_left[k] == -1
                value = model.learning_rate * tree.value[k][0][0] if leaf else 0.0
                nodes.append((-1 if leaf else int(tree.feature[k]),
                              0 if leaf else base + int(tree.children_left[k]),
                              0 if leaf else base + int(tree.children_right[k]),
                              0.0 if leaf else float(tree.threshold[k]), value))
        init = float(model._raw_predict_init(np.zeros((1, model.n_features_in_), dtype=np.float32))[0, 0])
        spans.append((first_root, len(model.estimators_), init))
    return nodes, roots, spans


def render_tables(models, feature_names, domain_cal, boundary_cal):
    nodes, roots, spans = tree_tables(models)
    out = ["// The model of the accuracy mode: boosted trees deciding which candidate cuts stand, and the",
           "// calibrations of its confidences. Written by scripts/train_cath_model.py from the CATH",
           "// choppings of the project's training chains; run it again rather than editing this file.",
           "#pragma once", "", "#include <cstdint>", "", '#include "cath/boosted_trees.h"', "",
           "namespace quarnel {", "",
           "// Features, in the order the trees read them: %s." % ", ".join(feature_names), "",
           "constexpr TreeNode kCathTreeNodes[] = {"]
    for feature, left, right, threshold, value in nodes:
        out.append("    {%d, %d, %d, %s, %s}," % (feature, left, right, number(threshold), number(value)))
    out.append("};")
    out.append("constexpr int32_t kCathTreeRoots[] = {")
    for k in range(0, len(roots), 12):
        out.append("    " + " ".join("%d," % r for r in roots[k:k + 12]))
    out.append("};")
    out.append("")
    for name, (first, count, init) in zip(("kWholeChainModel", "kPartModel"), spans):
        out.append("constexpr BoostedModel %s = {%d, %d, %s};" % (name, first, count, number(init)))
    out.append("constexpr double kWholeChainThreshold = %s;" % number(THRESHOLD))
    out.append("constexpr double kPartThreshold = %s;" % number(THRESHOLD))
    out.append("")
    out.append("// Probability that a domain is one CATH domain: logistic in the bounded log-odds that")
    out.append("// the domain stays undivided and that the cut above it stands.")
    out.append("constexpr double kCalibrationBound = %s;" % number(CALIBRATION_BOUND))
    out.append("constexpr double kDomainCalibration[3] = {%s, %s, %s};" % (
        number(domain_cal.intercept_[0]), number(domain_cal.coef_[0][0]), number(domain_cal.coef_[0][1])))
    out.append("// Probability that a boundary separates two CATH domains: logistic in the cut's log-odds.")
    out.append("constexpr double kBoundaryCalibration[2] = {%s, %s};" % (
        number(boundary_cal.intercept_[0]), number(boundary_cal.coef_[0][0])))
    out.append("")
    out.append("}  // namespace quarnel")
    return "\n".join(out) + "\n"


def check_inference(chains, models):
    """quarnel's log-odds, written with the candidates, against the trained models' own: the
    same number to the last bit, or the C++ inference is not the model's."""
    differ = total = 0
    for chain in chains:
        for k in chain.cut_nodes():
            model = models[0] if k == 0 else models[1]
            expected = float(model.decision_function(np.array([chain.nodes[k]["features"]], dtype=np.float32))[0])
            total += 1
            differ += expected != chain.nodes[k].get("log_odds")
    print("quarnel's log-odds against the models': %d cuts, %d differ" % (total, differ))
    if differ:
        sys.exit(1)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quarnel", default=os.path.join(ROOT, "build", "quarnel"))
    parser.add_argument("--data", default=os.path.join(os.path.dirname(ROOT), "shared", "data"))
    parser.add_argument("--features", help="candidate trees written earlier (JSON Lines)")
    parser.add_argument("--out", default=os.path.join(ROOT, "src", "cath", "model_tables.h"))
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--ceilings", action="store_true",
                        help="also what the candidates and the whole chain's call bound the accuracy to")
    parser.add_argument("--noss-figures", action="store_true",
                        help="also the cross-validated figures of runs with -noss")
    args = parser.parse_args()

    rows = truth_rows(args.data)
    trees = candidate_trees(args, rows)
    chains = [Chain(row, tree) for row, tree in zip(rows, trees)]
    feature_names = trees[0]["feature_names"]

    log_odds = cross_validated_log_odds(chains)
    print("Cross-validated over %d chains (%d folds by PDB entry):" % (len(chains), FOLDS))
    print_figures(score_rows(chains, log_odds))
    if args.ceilings:
        print_ceilings(chains, log_odds)
    if args.noss_figures:
        without = [Chain(row, tree) for row, tree in zip(rows, candidate_trees(args, rows, ["-noss"]))]
        print("The same models deciding runs with -noss (no secondary structure):")
        print_figures(score_rows(without, cross_validated_log_odds(chains, without)))
    domain_pairs, boundary_pairs = calibration_samples(chains, log_odds)
    domain_cal, dx, dy = fit_calibration(domain_pairs)
    boundary_cal, bx, by = fit_calibration(boundary_pairs)
    print_reliability("domains", domain_cal, dx, dy)
    print_reliability("boundaries", boundary_cal, bx, by)

    models = []
    for whole_chain, settings in ((True, WHOLE_CHAIN), (False, PART)):
        x, y, _ = samples(chains, whole_chain)
        models.append(fit(x, y, settings))
    text = render_tables(models, feature_names, domain_cal, boundary_cal)
    if args.check:
        with open(args.out) as handle:
            if handle.read() != text:
                sys.exit("train_cath_model.py: %s differs from the tables trained now" % args.out)
        print("%s: the same tables" % args.out)
        check_inference(chains, models)
        return
    with open(args.out, "w") as handle:
        handle.write(text)
    print("wrote %s (%d trees)" % (args.out, sum(len(m.estimators_) for m in models)))


if __name__ == "__main__":
    main()
