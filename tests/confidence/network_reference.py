#!/usr/bin/env python3
"""Reference outputs of the 9-8-1 scoring network, computed without the C++ code.

Single precision is emulated exactly: decimals are rounded straight to the nearest float32
(through fractions, not through a double), the running sum is rounded to float32 after every
connection, and the net input bias + sum is the float32 nearest the exact sum. Prints each
vector's score as a C hex float literal, for network_test.cpp. Standard library only.
"""
import math
import struct
from fractions import Fraction

HIDDEN = {  # unit: (bias, weights from input units 1..9)
    10: ("-0.17064",
         "3.67052 -0.02355 2.83912 0.86335 -0.10529 -1.24042 -8.80781 26.02224 -20.13426"),
    11: ("-0.48859",
         "-0.16696 0.00024 1.12993 -0.18481 0.05119 0.54128 -2.21761 -16.58248 11.98293"),
    12: ("7.80255",
         "0.87117 -0.01327 -0.58681 -0.25476 -1.28584 3.61477 3.13959 -6.93018 -15.29387"),
    13: ("-0.93365",
         "-0.5796 0.67898 -0.69792 0.58046 0.76856 0.08722 0.74827 0.48054 0.89788"),
    14: ("0.20555",
         "0.56844 -0.02217 -1.40421 0.10602 -0.12592 -0.03929 3.02144 -1.15617 -0.80988"),
    15: ("0.09673",
         "-15.8832 0.03618 -1.81354 0.06369 0.54469 -5.72859 2.9319 0.01931 -1.53109"),
    16: ("154.92741",
         "155.77432 156.12901 155.06813 154.66736 154.7694 155.62183 154.58786 155.308 156.07256"),
    17: ("0.12011",
         "9.24195 -0.06894 0.57421 0.21726 -1.58914 1.22569 -3.63845 -19.5572 24.74901"),
}
OUTPUT = ("-0.40035",
          "-4.18989 -4.00983 3.01283 0.92573 6.24853 3.0502 -0.79266 -3.26261")


def f32(x):
    """The float32 nearest a Python float (one rounding, from a double)."""
    return struct.unpack("f", struct.pack("f", x))[0]


def neighbours(x):
    bits = struct.unpack("I", struct.pack("f", x))[0]
    out = []
    for b in (bits - 1, bits, bits + 1):
        if 0 <= b < 2**32:
            v = struct.unpack("f", struct.pack("I", b))[0]
            if math.isfinite(v):
                out.append((v, b))
    return out


def f32_exact(q):
    """The float32 nearest an exact rational, ties to even."""
    q = Fraction(q)
    best = None
    for v, b in neighbours(f32(float(q))):
        key = (abs(Fraction(v) - q), b & 1)
        if best is None or key < best[0]:
            best = (key, v)
    return best[1]


def dec(s):
    return f32_exact(Fraction(s))


def unit(acts, bias, weights):
    total = f32(0.0)
    for a, w in zip(acts, weights):
        total = f32(total + a * w)  # product exact in double, sum rounded in double then float
    net = f32_exact(Fraction(bias) + Fraction(total)) if math.isfinite(total) else float("nan")
    if net < 10000.0:
        try:
            e = math.exp(-total - bias)
        except OverflowError:
            return 0.0
        return f32(1.0 / (1.0 + e))
    return 0.0


def score(vector):
    inputs = [dec(v) if isinstance(v, str) else v for v in vector]
    hidden = []
    for u in range(10, 18):
        bias, weights = HIDDEN[u]
        hidden.append(unit(inputs, dec(bias), [dec(w) for w in weights.split()]))
    bias, weights = OUTPUT
    return unit(hidden, dec(bias), [dec(w) for w in weights.split()]), hidden


VECTORS = [
    ["0", "0", "0", "0", "0", "0", "0", "0", "0"],
    ["0.6", "120", "2", "3", "5", "1", "0.7", "0.1", "0.15"],
    ["0.3", "80", "4", "6", "12", "2", "0.5", "0.3", "0.4"],
    ["0.45", "35", "1", "0", "0", "0", "0.55", "0.04", "0.06"],
    ["0.25", "2", "1", "1", "0", "1", "0.02", "0.01", "0.03"],
    # The six-residue domains of assessment_test.cpp (ratio 4/6, 6 residues, 1 segment,
    # 6 far residues) with the cut scores given there.
    ["0.6666667", "6", "1", "0", "6", "0", "0.6", "0.19", "0.15"],
    ["0.6666667", "6", "1", "0", "6", "0", "0.7", "0.1", "0.15"],
    ["0.6666667", "6", "1", "0", "6", "0", "0.55", "0.04", "0.06"],
    ["0.6666667", "6", "1", "0", "6", "0", "0.9", "0.1", "0.1"],
]

if __name__ == "__main__":
    for v in VECTORS:
        s, hidden = score(v)
        print("{%s}: %s  (%.9g)" % (", ".join(v), s.hex(), s))
    nan_score, _ = score([float("nan")] + ["0"] * 8)
    print("nan input: %s  (%.9g)" % (nan_score.hex(), nan_score))
