#!/usr/bin/env bash
# Benchmark over a folder of real structures: the built quarnel on every file, in the default
# mode and with -noss, and the DSSP adapter alone on every file. Writes one TSV per mode and a
# summary (median and maximum seconds per chain and per 100 residues) to the results folder.
#
# Usage: bash bench/run_bench.sh [--structures DIR] [--tool PATH] [--out DIR] [--timeout S]
#                                [--dssp-only]
#   --structures  folder of *.pdb files    (default: ../shared/data/structures beside the repo)
#   --tool        the quarnel executable   (default: build/quarnel)
#   --out         results folder           (default: bench/results)
#   --timeout     seconds allowed per run  (default: 600)
#   --dssp-only   time the DSSP adapter alone, skip quarnel
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
structures=$root/../shared/data/structures
tool=$root/build/quarnel
out=$root/bench/results
timeout=600
dssp_only=0

fail() {
  echo "run_bench: $*" >&2
  exit 1
}

while (($# > 0)); do
  case $1 in
    --structures) structures=${2:?--structures needs a folder}; shift 2 ;;
    --tool) tool=${2:?--tool needs a path}; shift 2 ;;
    --out) out=${2:?--out needs a folder}; shift 2 ;;
    --timeout) timeout=${2:?--timeout needs seconds}; shift 2 ;;
    --dssp-only) dssp_only=1; shift ;;
    *) fail "unknown argument $1 (see the head of $0)" ;;
  esac
done

[[ -d $structures ]] || fail "no structure folder $structures"
shopt -s nullglob
files=("$structures"/*.pdb)
shopt -u nullglob
((${#files[@]} > 0)) || fail "no *.pdb file in $structures"
if ((!dssp_only)); then
  [[ -x $tool ]] || fail "no built tool at $tool (bash scripts/setup.sh builds it)"
  tool=$(cd "$(dirname "$tool")" && pwd)/$(basename "$tool")
fi
command -v python3 >/dev/null || fail "python3 is needed to measure the runs"
mkdir -p "$out"
out=$(cd "$out" && pwd)

measure=$root/bench/measure.py
adapter=$root/tools/quarnel-dssp
# shellcheck source=scripts/setup.sh
source "$root/scripts/setup.sh"
# GNU time gives the peak memory of the measured run alone (see bench/measure.py).
if [[ ! -x /usr/bin/time ]]; then
  apt_install time ||
    echo "run_bench: no GNU time; peak memory will include the measuring Python process" >&2
fi

# quarnel pastes DSSP_PATH into a shell command as it stands: quote it for /bin/sh.
DSSP_PATH=$(shell_quote "$adapter")
export DSSP_PATH

scratch=$(mktemp -d "${TMPDIR:-/tmp}/quarnel-bench.XXXXXX")
trap 'rm -rf -- "$scratch"' EXIT

# A message for the TSV: the first non-blank line of a file, tabs turned into blanks.
first_line() {
  sed -n '/[^[:space:]]/{p;q;}' "$1" | tr '\t' ' ' | cut -c1-200
}

# The report line: the last line of standard output whose 2nd and 3rd tab-separated fields
# are numbers (warnings may come before it).
report_line() {
  awk -F'\t' 'NF >= 3 && $2 ~ /^[0-9]+$/ && $3 ~ /^[0-9]+$/ { line = $0 } END { print line }' "$1"
}

# run_tool <file> <option...>: one quarnel run in a fresh working folder, on a copy named
# without directories (quarnel names its DSSP output after the input path up to its first '.',
# so a path into the data folder would write there). Prints one TSV row.
run_tool() {
  local file=$1
  shift
  local name dir
  name=$(basename "$file")
  dir=$(mktemp -d "$scratch/run.XXXXXX")
  cp -- "$file" "$dir/$name"
  local measured status seconds peak report residues domains message
  measured=$(python3 "$measure" --cwd "$dir" --stdout "$dir.out" --stderr "$dir.err" \
    --timeout "$timeout" -- "$tool" "$@" "$name")
  IFS=$'\t' read -r status seconds peak <<<"$measured"
  report=$(report_line "$dir.out")
  residues=$(cut -f2 <<<"$report")
  domains=$(cut -f3 <<<"$report")
  message=""
  if [[ $status != 0 || -z $report ]]; then
    message=$(first_line "$dir.err")
    [[ -n $message ]] || message=$(first_line "$dir.out")
    [[ -n $message ]] || ((status <= 128)) || message="killed by signal $((status - 128))"
  fi
  printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$name" "$residues" "$domains" \
    "$(tr '\t' ' ' <<<"$report")" "$seconds" "$peak" "$status" "$message"
  rm -rf -- "$dir" "$dir.out" "$dir.err"
}

# run_adapter <file>: the DSSP adapter alone on a copy. Prints one TSV row: the residues of
# DSSP's table (chain-break lines not counted), and DSSP's first message even on success.
run_adapter() {
  local file=$1
  local name dir
  name=$(basename "$file")
  dir=$(mktemp -d "$scratch/dssp.XXXXXX")
  cp -- "$file" "$dir/$name"
  local measured status seconds peak rows residues
  measured=$(python3 "$measure" --cwd "$dir" --stdout "$dir.out" --stderr "$dir.err" \
    --timeout "$timeout" -- "$adapter" "$name")
  IFS=$'\t' read -r status seconds peak <<<"$measured"
  read -r rows residues < <(awk 'seen { rows++; if (substr($0, 14, 1) != "!") residues++ }
      index($0, "  #  RESIDUE") == 1 { seen = 1 }
      END { print (seen ? rows + 0 : -1), residues + 0 }' "$dir.out")
  printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$name" "$residues" "$status" \
    "$([[ $rows -ge 0 ]] && echo yes || echo no)" "$rows" "$seconds" "$peak" \
    "$(first_line "$dir.err")"
  rm -rf -- "$dir" "$dir.out" "$dir.err"
}

tool_header=$'file\tresidues\tdomains\treport\tseconds\tpeak_kb\tstatus\tmessage'
dssp_header=$'file\tresidues\tstatus\ttable\ttable_rows\tseconds\tpeak_kb\tmessage'

# bench_mode <mode> <option...>: writes <mode>.tsv.
bench_mode() {
  local mode=$1
  shift
  local tsv=$out/$mode.tsv
  printf '%s\n' "$tool_header" >"$tsv"
  local i=0 file
  for file in "${files[@]}"; do
    i=$((i + 1))
    run_tool "$file" "$@" >>"$tsv"
    printf '[%d/%d] quarnel (%s) %s: %s\n' "$i" "${#files[@]}" "$mode" "$(basename "$file")" \
      "$(tail -n 1 "$tsv" | cut -f2,3,5,7 | tr '\t' ' ')" >&2
  done
}

printf '%s\n' "$dssp_header" >"$out/dssp.tsv"
i=0
for file in "${files[@]}"; do
  i=$((i + 1))
  run_adapter "$file" >>"$out/dssp.tsv"
  printf '[%d/%d] quarnel-dssp %s: %s\n' "$i" "${#files[@]}" "$(basename "$file")" \
    "$(tail -n 1 "$out/dssp.tsv" | cut -f2,3,6 | tr '\t' ' ')" >&2
done

tables=("$out/dssp.tsv")
if ((!dssp_only)); then
  bench_mode default
  bench_mode noss -noss
  tables=("$out/default.tsv" "$out/noss.tsv" "$out/dssp.tsv")
fi

python3 "$root/bench/summarize.py" "${tables[@]}" | tee "$out/summary.txt"
