#!/usr/bin/env python3
"""Joins the first-model ATOM records of several PDB entries into one single-chain structure.

Every record is put in chain A and the residues are renumbered in one run from -999 upwards
(the four resSeq columns hold -999 to 9999), insertion codes dropped, so that no two residues of
the joined chain share a number. Each entry is moved so that its centre lies on the x axis,
300 A from the next one: the entries touch nowhere, and every x coordinate stays below 998.9
(a CA whose x exceeds that counts as missing). Writes the structure on standard output.
"""
import sys

FIRST_NUMBER = -999
LAST_NUMBER = 9999
SPACING = 300.0


def atom_records(path):
    records = []
    with open(path) as pdb:
        for line in pdb:
            line = line.rstrip("\r\n")
            if line.startswith("END"):
                break
            if line.startswith("ATOM  ") and len(line) >= 54:
                records.append(line)
    return records


def main():
    paths = sys.argv[1:]
    if not paths:
        sys.exit("usage: join_entries.py entry.pdb...")
    number = FIRST_NUMBER - 1
    serial = 0
    out = sys.stdout
    for k, path in enumerate(paths):
        records = atom_records(path)
        centre = [sum(float(r[30 + 8 * c:38 + 8 * c]) for r in records) / len(records)
                  for c in range(3)]
        shift = [SPACING * (k - (len(paths) - 1) / 2.0) - centre[0], -centre[1], -centre[2]]
        last = None
        for r in records:
            if r[22:27] != last:
                last = r[22:27]
                number += 1
                if number > LAST_NUMBER:
                    sys.exit("join_entries.py: more residues than resSeq can number")
            serial += 1
            xyz = [float(r[30 + 8 * c:38 + 8 * c]) + shift[c] for c in range(3)]
            out.write("%s%5d%sA%4d    %8.3f%8.3f%8.3f%s\n" % (
                r[:6], serial % 100000, r[11:21], number, xyz[0], xyz[1], xyz[2], r[54:]))
    out.write("END\n")


if __name__ == "__main__":
    main()
