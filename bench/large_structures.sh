#!/usr/bin/env bash
# Large-structure check: the built quarnel on the largest chains at hand, with wall time and
# peak memory. 1jz8 read as a file is one array of its four chains (4044 residues) and runs in
# the default mode with DSSP (the repository's adapter) when a DSSP program is installed, else
# with -noss; a joined chain of 1jz8, 4jsv, 3thy and 1kqf (10066 residues, see
# bench/join_entries.py) runs with -noss. Each run must end with status 0 and a report line.
#
# Usage: bash bench/large_structures.sh [--structures DIR] [--tool PATH] [--out DIR]
#                                       [--timeout S]
#   --structures  folder holding 1jz8.pdb, 4jsv.pdb, 3thy.pdb, 1kqf.pdb
#                 (default: ../shared/data/structures beside the repository)
#   --tool        the quarnel executable   (default: build/quarnel)
#   --out         results folder           (default: bench/results/large)
#   --timeout     seconds allowed per run  (default: 1800)
# Prints one line per run: input, residues, mode, status, seconds, peak MB, report head.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
structures=$root/../shared/data/structures
tool=$root/build/quarnel
out=$root/bench/results/large
timeout=1800

fail() {
  echo "large_structures: $*" >&2
  exit 1
}

while (($# > 0)); do
  case $1 in
    --structures) structures=${2:?--structures needs a folder}; shift 2 ;;
    --tool) tool=${2:?--tool needs a path}; shift 2 ;;
    --out) out=${2:?--out needs a folder}; shift 2 ;;
    --timeout) timeout=${2:?--timeout needs seconds}; shift 2 ;;
    *) fail "unknown argument $1 (see the head of $0)" ;;
  esac
done

command -v python3 >/dev/null || fail "python3 is needed to measure the runs"
[[ -x $tool ]] || fail "no quarnel at $tool (build it: bash scripts/setup.sh)"
for entry in 1jz8 4jsv 3thy 1kqf; do
  [[ -r $structures/$entry.pdb ]] || fail "no $structures/$entry.pdb"
done
tool=$(cd "$(dirname "$tool")" && pwd)/$(basename "$tool")
mkdir -p "$out"
out=$(cd "$out" && pwd)

dssp_mode=(-noss)
dssp_env=()
if command -v mkdssp >/dev/null || command -v dssp >/dev/null; then
  dssp_mode=()
  dssp_env=("DSSP_PATH=$root/tools/quarnel-dssp")
fi

# run_one <name> <structure file> [options...]: runs in a folder of its own and prints the line.
run_one() {
  local name=$1 structure=$2
  shift 2
  local dir=$out/$name
  rm -rf "$dir"
  mkdir -p "$dir"
  cp "$structure" "$dir/$name.pdb"
  local measured status seconds peak residues report
  measured=$(env "${dssp_env[@]}" python3 "$root/bench/measure.py" --cwd "$dir" \
    --stdout "$dir.out" --stderr "$dir.err" --timeout "$timeout" -- "$tool" "$@" "$name.pdb")
  IFS=$'\t' read -r status seconds peak <<<"$measured"
  residues=$(awk '/^END/{exit} /^ATOM  /{ if (substr($0,14,1)=="H") next
                 k=substr($0,23,5); if (k!=last) {n++; last=k} } END{print n+0}' "$dir/$name.pdb")
  report=$(head -c 120 "$dir.out" | head -n 1 | tr '\t' ' ')
  printf '%-10s %6s residues  %-14s status %-3s %8.1f s  %7.0f MB  %s\n' "$name" "$residues" \
    "${*:-default}" "$status" "$seconds" "$((peak / 1024))" "$report"
  [[ $status == 0 ]] || { cat "$dir.err" >&2; return 1; }
}

result=0
run_one 1jz8 "$structures/1jz8.pdb" "${dssp_mode[@]}" || result=1
python3 "$root/bench/join_entries.py" "$structures"/{1jz8,4jsv,3thy,1kqf}.pdb >"$out/joined.pdb"
run_one joined10k "$out/joined.pdb" -noss || result=1
exit $result
