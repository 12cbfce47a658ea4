"""Scores of a domain chopping against a reference one, over the residues of one chain.

Both choppings become one label per residue (0: in no domain). Residues are named as quarnel
names them, author number plus insertion code ("100", "100A", "-3"); reference choppings
(CATH, in truth files) give author numbers without insertion codes and hold every residue of
that number.

- count: the number of domains agrees.
- NDO, the normalised domain overlap of Tai et al. (2005): the overlap matrix of predicted
  domains (rows, plus a row of residues in no predicted domain) and reference domains
  (columns), over the residues of reference domains only. A predicted domain scores twice its
  largest overlap with one reference domain minus its size; a reference domain twice its
  largest overlap with one predicted domain minus its size (residues in no predicted domain
  count against it). The sum over rows and columns is divided by twice the residues in
  reference domains: 1 for a perfect chopping.
- boundaries: a boundary lies between two residues of different domains that follow each other
  in the chain once residues in no domain are passed over; it spans the residues in no domain
  between them (a reference linker), and a predicted boundary anywhere from the last residue of
  one domain to the first of the next meets it at distance 0.
- boundary distance score (CASP, Tress et al. 2007): each reference boundary scores
  (T + 1 - d) / (T + 1) for the nearest predicted boundary d <= T residues away (T = 8), 0
  beyond; the sum is divided by the larger of the numbers of reference and predicted
  boundaries, so that boundaries made up cost as much as boundaries missed. A chain with no
  boundary in either chopping scores 1.
- hits: reference boundaries with a predicted boundary within +-20 residues.
"""
import csv
import re

BOUNDARY_WINDOW = 20
DBD_THRESHOLD = 8
RANGE = re.compile(r"^(-?\d+)([A-Za-z]?)-(-?\d+)([A-Za-z]?)$")


def read_truth(path):
    """The rows of a truth file: file (as written), chain, domains as lists of (start, end)."""
    rows = []
    with open(path, newline="") as handle:
        for row in csv.DictReader(handle, delimiter="\t"):
            domains = []
            for domain in row["boundaries"].split("|"):
                segments = []
                for segment in domain.split(","):
                    start, end = split_range(segment.strip())
                    segments.append((start[0], end[0]))
                domains.append(segments)
            rows.append({"file": row["file"], "chain": row["chain"],
                         "ndom": int(row["number_of_domains"]), "domains": domains})
    return rows


def split_range(text):
    """'12A-40' -> ((12, 'A'), (40, ''))."""
    match = RANGE.match(text)
    if not match:
        raise ValueError("not a residue range: %r" % text)
    return (int(match.group(1)), match.group(2)), (int(match.group(3)), match.group(4))


def parse_chopping(text):
    """quarnel's (and Chainsaw's) chopping: domains by ',', segments by '_'."""
    if text in ("", "NULL", "-"):
        return []
    return [[split_range(s) for s in domain.split("_")] for domain in text.split(",")]


def residue_key(name):
    match = re.match(r"^(-?\d+)([A-Za-z]?)$", name)
    return int(match.group(1)), match.group(2)


def reference_labels(residues, domains):
    """Labels by author number, insertion codes ignored: the reference does not give them."""
    labels = [0] * len(residues)
    for k, name in enumerate(residues):
        number = residue_key(name)[0]
        for d, segments in enumerate(domains, 1):
            if any(start <= number <= end for start, end in segments):
                labels[k] = d
                break
    return labels


def predicted_labels(residues, domains):
    """Labels from segments named by residue (number and insertion code), in chain order."""
    position = {}
    for k, name in enumerate(residues):
        position.setdefault(residue_key(name), k)
    labels = [0] * len(residues)
    for d, segments in enumerate(domains, 1):
        for start, end in segments:
            if start not in position or end not in position:
                raise ValueError("segment %s-%s names a residue not in the chain" % (start, end))
            for k in range(position[start], position[end] + 1):
                labels[k] = d
    return labels


def domain_count(labels):
    return len(set(labels) - {0})


def ndo(reference, predicted):
    pairs = [(p, r) for r, p in zip(reference, predicted) if r != 0]
    if not pairs:
        return 1.0
    overlap = {}
    for p, r in pairs:
        overlap[(p, r)] = overlap.get((p, r), 0) + 1
    rows = set(p for p, _ in pairs) - {0}
    columns = set(r for _, r in pairs)
    score = 0
    for p in rows:
        cells = [v for (q, _), v in overlap.items() if q == p]
        score += 2 * max(cells) - sum(cells)
    for r in columns:
        cells = [v for (q, s), v in overlap.items() if s == r and q != 0]
        total = sum(v for (_, s), v in overlap.items() if s == r)
        score += 2 * (max(cells) if cells else 0) - total
    return score / (2.0 * len(pairs))


def boundaries(labels):
    """(first, last) positions a boundary may lie between: the last residue of one domain and the
    first of the next, residues in no domain passed over."""
    found = []
    previous = None  # (position, label) of the last residue in a domain
    for k, label in enumerate(labels):
        if label == 0:
            continue
        if previous is not None and previous[1] != label:
            found.append((previous[0], k))
        previous = (k, label)
    return found


def distance(a, b):
    """How many residues apart two boundaries are: a span (p, q) holds the places between
    residues p and p + 1 up to those between q - 1 and q; 0 when two spans share a place."""
    if a[1] <= b[0]:
        return b[0] - a[1] + 1
    if b[1] <= a[0]:
        return a[0] - b[1] + 1
    return 0


def nearest(span, others):
    return min((distance(span, o) for o in others), default=None)


def boundary_hits(reference, predicted, window=BOUNDARY_WINDOW):
    ref, pred = boundaries(reference), boundaries(predicted)
    hits = sum(1 for b in ref if pred and nearest(b, pred) <= window)
    return hits, len(ref)


def boundary_distance_score(reference, predicted, threshold=DBD_THRESHOLD):
    ref, pred = boundaries(reference), boundaries(predicted)
    if not ref and not pred:
        return 1.0
    total = 0.0
    for b in ref:
        d = nearest(b, pred)
        if d is not None and d <= threshold:
            total += (threshold + 1 - d) / (threshold + 1.0)
    return total / max(len(ref), len(pred))
