#!/usr/bin/env bash
# Checks the in-process DSSP (src/secondary) against mkdssp run through tools/quarnel-dssp: for
# every structure file, the whole file as quarnel reads it and each chain as quarnel's chain copy
# holds it, the residue-table rows must agree in columns 1-33 (quarnel reads no further); column
# 34, the sheet label, is compared too. Where mkdssp fails, the library's answer is recorded.
# Writes a TSV, one line per case, and prints a summary.
#
# Usage: bash bench/dssp_library_check.sh [--structures DIR] [--probe PATH] [--out FILE]
#   --structures  folder of *.pdb files          (default: ../shared/data/structures beside the repo)
#   --probe       the built dssp_library_probe   (default: build/dssp_library_probe)
#   --out         the TSV written                (default: bench/dssp_library_check.tsv)
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
structures=$root/../shared/data/structures
probe=$root/build/dssp_library_probe
out=$root/bench/dssp_library_check.tsv
adapter=$root/tools/quarnel-dssp
readonly kTableHeader='  #  RESIDUE'

fail() {
  echo "dssp_library_check: $*" >&2
  exit 1
}

while (($# > 0)); do
  case $1 in
    --structures) structures=${2:?--structures needs a folder}; shift 2 ;;
    --probe) probe=${2:?--probe needs a path}; shift 2 ;;
    --out) out=${2:?--out needs a file}; shift 2 ;;
    *) fail "unknown argument $1 (see the head of $0)" ;;
  esac
done

[[ -d $structures ]] || fail "no structure folder $structures"
[[ -x $probe ]] || cmake --build "$root/build" --target dssp_library_probe >/dev/null || true
[[ -x $probe ]] || fail "no probe at $probe (cmake --build build --target dssp_library_probe)"
shopt -s nullglob
files=("$structures"/*.pdb)
shopt -u nullglob
((${#files[@]} > 0)) || fail "no *.pdb file in $structures"

work=$(mktemp -d "${TMPDIR:-/tmp}/dssp_library_check.XXXXXX")
trap 'rm -rf -- "$work"' EXIT

# The table rows after the header line, cut to the given columns.
table_rows() {
  awk -v header="$kTableHeader" -v last="$2" '
    seen { print substr($0, 1, last) }
    index($0, header) == 1 { seen = 1 }' "$1"
}

# The chain letters of the ATOM records before the first END, in order; blank chains are left
# out (a blank chain is read through the whole file).
chains_of() {
  awk '/^END/ { exit }
       /^ATOM  / { c = substr($0, 22, 1); if (c != " " && !(c in seen)) { seen[c] = 1; printf "%s", c } }' "$1"
}

# quarnel's chain copy: the chain's ATOM records up to the first END, then TER and END.
write_chain_copy() {
  awk -v c="$2" '/^ATOM  / && substr($0, 22, 1) == c { print } /^END/ { exit }' "$1" >"$3"
  printf 'TER\nEND\n' >>"$3"
}

first_line() { sed -n '/[^[:space:]]/{p;q;}' "$1" | tr '\t' ' ' | cut -c1-160; }

# One case: $1 name, $2 kind, $3 PDB text given to mkdssp, then the probe's arguments.
check_case() {
  local name=$1 kind=$2 pdb=$3
  shift 3
  local ref=$work/ref.dssp lib=$work/lib.dssp
  local ref_status=0 lib_status=0
  "$adapter" "$pdb" >"$ref" 2>"$work/ref.err" || ref_status=$?
  "$probe" "$@" >"$lib" 2>"$work/lib.err" || lib_status=$?
  local ref_rows=-1 lib_rows=-1 equal=- sheet=- note=
  ((ref_status != 0)) || ref_rows=$(table_rows "$ref" 33 | wc -l)
  ((lib_status != 0)) || lib_rows=$(table_rows "$lib" 33 | wc -l)
  if ((ref_status == 0 && lib_status == 0)); then
    equal=no
    sheet=no
    if cmp -s <(table_rows "$ref" 33) <(table_rows "$lib" 33); then equal=yes; fi
    if cmp -s <(table_rows "$ref" 34) <(table_rows "$lib" 34); then sheet=yes; fi
    if [[ $equal == no ]]; then
      note="first difference: $(diff <(table_rows "$ref" 33) <(table_rows "$lib" 33) |
        sed -n '2p' | cut -c1-60)"
    fi
  elif ((ref_status != 0)); then
    note="mkdssp: $(grep 'quarnel-dssp:' "$work/ref.err" | head -n 1 | sed 's/^quarnel-dssp: //' |
      sed "s|$work/||" | cut -c1-120)"
    ((lib_status == 0)) || note="$note; library: $(first_line "$work/lib.err")"
  else
    note="library: $(first_line "$work/lib.err")"
  fi
  printf '%s\t%s\t%d\t%d\t%d\t%d\t%s\t%s\t%s\n' "$name" "$kind" "$ref_status" "$ref_rows" \
    "$lib_status" "$lib_rows" "$equal" "$sheet" "$note" >>"$out"
}

printf 'case\tkind\tmkdssp_status\tmkdssp_rows\tlibrary_status\tlibrary_rows\tequal_1_33\tequal_34\tnote\n' >"$out"
for file in "${files[@]}"; do
  base=$(basename "$file" .pdb)
  check_case "$base" file "$file" "$file"
  chains=$(chains_of "$file")
  for ((i = 0; i < ${#chains}; i++)); do
    chain=${chains:i:1}
    copy=$work/${base}_$chain.pdb
    write_chain_copy "$file" "$chain" "$copy"
    check_case "${base}_$chain" chain "$copy" --chain "$chain" "$file"
  done
done

awk -F'\t' 'NR > 1 {
    n[$2]++
    if ($7 == "yes") eq[$2]++
    if ($8 == "yes") sheet[$2]++
    if ($7 == "no") diff[$2]++
    if ($3 != 0) reffail[$2]++
  }
  END {
    for (k in n)
      printf "%s: %d cases, %d equal in columns 1-33 (%d also in column 34), %d differ, %d where mkdssp failed\n",
        k, n[k], eq[k] + 0, sheet[k] + 0, diff[k] + 0, reffail[k] + 0
  }' "$out"
echo "written: $out"
