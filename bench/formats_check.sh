#!/usr/bin/env bash
# Format check of the structure-file front end: every PDB file of the structures folder is
# converted to mmCIF with gemmi and both are gzipped; the records quarnel's reader builds from
# each chain copy and from the whole file must be those of the PDB file itself. The real mmCIF
# and .pdb.gz files of the formats folder are checked against their PDB counterparts, and every
# residue count of the manifest against the chain listing.
#
# Usage: bash bench/formats_check.sh [--data DIR] [--probe PATH] [--out FILE]
#   --data   folder holding structures/, formats/ and MANIFEST.tsv
#            (default: ../shared/data beside the repository)
#   --probe  the built formats_probe    (default: build/formats_probe)
#   --out    result table               (default: bench/formats_check.tsv)
# Exits non-zero when a comparison or a manifest count disagrees.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
data=$root/../shared/data
probe=$root/build/formats_probe
out=$root/bench/formats_check.tsv

fail() {
  echo "formats_check: $*" >&2
  exit 1
}

while (($# > 0)); do
  case $1 in
    --data) data=${2:?--data needs a folder}; shift 2 ;;
    --probe) probe=${2:?--probe needs a path}; shift 2 ;;
    --out) out=${2:?--out needs a file}; shift 2 ;;
    *) fail "unknown argument $1 (see the head of $0)" ;;
  esac
done

[[ -x $probe ]] || cmake --build "$root/build" --target formats_probe >/dev/null || true
[[ -x $probe ]] || fail "no formats_probe at $probe (cmake --build build --target formats_probe)"
[[ -d $data/structures && -r $data/MANIFEST.tsv ]] || fail "no structures/ or MANIFEST.tsv in $data"
command -v gzip >/dev/null || fail "gzip is needed"

work=$(mktemp -d "${TMPDIR:-/tmp}/quarnel-formats.XXXXXX")
trap 'rm -rf -- "$work"' EXIT
rows=$work/rows.tsv
: >"$rows"
status=0

# compare <reference.pdb> <other file> <variant>: one row; a disagreement is kept and counted.
compare() {
  if ! "$probe" compare "$1" "$2" "$3" >>"$rows" 2>"$work/error"; then
    status=1
    if [[ -s $work/error ]]; then
      printf '%s\t%s\tERROR\t\t\t\t\t\t\t\t\t\t\t\t\t%s\n' "$1" "$3" "$(tr '\t\n' '  ' <"$work/error")" >>"$rows"
    fi
  fi
}

for pdb in "$data"/structures/*.pdb; do
  entry=$(basename "$pdb" .pdb)
  "$probe" to-mmcif "$pdb" "$work/$entry.cif"
  gzip -c -n "$pdb" >"$work/$entry.pdb.gz"
  gzip -c -n "$work/$entry.cif" >"$work/$entry.cif.gz"
  compare "$pdb" "$work/$entry.cif" gemmi-mmcif
  compare "$pdb" "$work/$entry.pdb.gz" pdb.gz
  compare "$pdb" "$work/$entry.cif.gz" gemmi-mmcif.gz
  rm -f -- "$work/$entry.cif" "$work/$entry.pdb.gz" "$work/$entry.cif.gz"
done

for cif in "$data"/formats/*.cif; do
  entry=$(basename "$cif" .cif)
  compare "$data/structures/$entry.pdb" "$cif" wwpdb-mmcif
done
for gz in "$data"/formats/*.pdb.gz; do
  entry=$(basename "$gz" .pdb.gz)
  compare "$data/structures/$entry.pdb" "$gz" wwpdb-pdb.gz
done

# The manifest's residue counts (ATOM records, first model) against the listing of the
# reference PDB file; a manifest chain missing from the listing disagrees too.
{
  "$probe" header | sed 's/$/\tmanifest/'
  awk -F'\t' -v data="$data" '
    FNR == NR {
      if (FNR > 1) manifest[data "/" $1] = $4
      next
    }
    {
      verdict = "-"
      if ($1 in manifest && $3 != "ERROR") {
        verdict = "yes"
        n = split($15, listed, ",")
        delete have
        for (i = 1; i <= n; i++) {
          split(listed[i], part, ":")
          have[part[1]] = part[2]
        }
        m = split(manifest[$1], wanted, ",")
        for (i = 1; i <= m; i++) {
          split(wanted[i], part, ":")
          if (!(part[1] in have) || have[part[1]] != part[2]) verdict = "NO"
        }
      }
      print $0 "\t" verdict
    }' "$data/MANIFEST.tsv" "$rows"
} | sed "s#$data/##g" >"$out"

awk -F'\t' 'NR > 1 && ($5 != "yes" || $7 != "yes" || $NF == "NO")' "$out" | grep -q . && status=1
awk -F'\t' '
  NR == 1 { next }
  { rows++; split($6, c, "/"); chains += c[2]; equal += c[1]; reordered += $12 }
  $5 == "yes" && $7 == "yes" && $NF != "NO" { agree++ }
  $NF == "yes" { manifest++ }
  END {
    printf "formats_check: %d of %d comparisons agree; %d of %d chain copies give the same records", agree, rows, equal, chains
    printf " (%d residues with their atoms in another order); %d manifest entries match\n", reordered, manifest
  }' "$out"
echo "formats_check: table in $out"
exit "$status"
