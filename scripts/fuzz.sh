#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, with AddressSanitizer and UndefinedBehaviorSanitizer) and
# runs each for a bounded time on a working copy of its seed corpus.
#
# Usage: scripts/fuzz.sh [seconds per target] [target...]
#   seconds  time each target runs (default 30); scripts/fuzz.sh 600 is the long run
#   target   readers (the PDB, DSSP and profile readers on one text), run (a whole -noss run) or
#            batch (a structure file of any kind: chains split out, --min-plddt, every writer);
#            default: all three, one after the other
# Prints, per target, the executions and the coverage libFuzzer reached. Fails (status 1) when a
# target crashes, leaks, times out or breaks one of its checks; the input that did it is left
# in <build>/fuzz-crashes/<target>/ and libFuzzer's report in <build>/fuzz-logs/<target>.log.
# The seeds in fuzz/corpus/ stay as committed: the fuzzers grow fuzz/corpus-work/ (git-ignored),
# which later runs start from. QUARNEL_FUZZ_BUILD_DIR overrides the build folder (build-fuzz/).
# QUARNEL_FUZZ_DEADLINE (seconds since the epoch) shortens the runs to what is left before it,
# shared among the targets not yet run, but never below 3 seconds a target: the test suite
# keeps to its time on a slower machine by fuzzing less, not by fuzzing nothing.
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
BUILD=${QUARNEL_FUZZ_BUILD_DIR:-$ROOT/build-fuzz}
SECONDS_PER_TARGET=${1:-30}
shift || true
ALL_TARGETS=(readers run batch)
TARGETS=("$@")
((${#TARGETS[@]} > 0)) || TARGETS=("${ALL_TARGETS[@]}")

# A whole run on a structure of a few hundred residues takes up to a second or two under the
# sanitizers; an iteration that takes a minute is a hang.
readonly kTimeoutSeconds=60
readonly kRssLimitMb=4096

say() { printf '== %s\n' "$*"; }

if ! [[ $SECONDS_PER_TARGET =~ ^[0-9]+$ ]] || ((SECONDS_PER_TARGET < 1)); then
  echo "fuzz.sh: the time per target must be a whole number of seconds, not '$SECONDS_PER_TARGET'" >&2
  exit 2
fi

max_len() {
  case $1 in
    run) echo 32768 ;;  # a first line of options and a structure of up to ~400 residues
    batch) echo 65536 ;;  # a small mmCIF file, or a few chains of PDB records
    *) echo 16384 ;;
  esac
}

dictionary() { echo "$ROOT/fuzz/$1.dict"; }

for target in "${TARGETS[@]}"; do
  [[ " ${ALL_TARGETS[*]} " == *" $target "* ]] || {
    echo "fuzz.sh: no fuzz target '$target' (targets: ${ALL_TARGETS[*]})" >&2
    exit 2
  }
done

command -v clang++ >/dev/null || {
  echo "fuzz.sh: clang++ is needed (Debian/Ubuntu: apt-get install clang)" >&2
  exit 2
}

say "configuring $BUILD"
# Ninja when it is there: it compiles the layers' files at once, Make one library after another.
generator=()
[[ -e $BUILD/CMakeCache.txt ]] || ! command -v ninja >/dev/null || generator=(-G Ninja)
CC=clang CXX=clang++ cmake -S "$ROOT" -B "$BUILD" "${generator[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQUARNEL_FUZZ=ON -DQUARNEL_TESTS=OFF >/dev/null
say "building ${TARGETS[*]}"
cmake --build "$BUILD" --parallel "$(nproc 2>/dev/null || echo 2)" \
  --target "${TARGETS[@]/#/fuzz_}" >/dev/null

failed=()
done_targets=()
readonly kMinSeconds=3
for target in "${TARGETS[@]}"; do
  work=$ROOT/fuzz/corpus-work/$target
  crashes=$BUILD/fuzz-crashes/$target
  log=$BUILD/fuzz-logs/$target.log
  mkdir -p "$work" "$crashes" "$(dirname "$log")"
  cp -p "$ROOT/fuzz/corpus/$target"/* "$work"/

  seconds=$SECONDS_PER_TARGET
  if [[ -n ${QUARNEL_FUZZ_DEADLINE:-} ]]; then
    share=$(((QUARNEL_FUZZ_DEADLINE - $(date +%s)) / (${#TARGETS[@]} - ${#done_targets[@]})))
    ((share >= seconds)) || seconds=$((share > kMinSeconds ? share : kMinSeconds))
  fi
  done_targets+=("$target")
  say "fuzzing $target for ${seconds}s (corpus $work)"
  status=0
  "$BUILD/fuzz_$target" -max_total_time="$seconds" -max_len="$(max_len "$target")" \
    -timeout="$kTimeoutSeconds" -rss_limit_mb="$kRssLimitMb" -print_final_stats=1 \
    -dict="$(dictionary "$target")" -artifact_prefix="$crashes/" "$work" >"$log" 2>&1 ||
    status=$?

  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  coverage=$(grep -E '^#[0-9]+' "$log" | tail -n 1 | grep -oE 'cov: [0-9]+ ft: [0-9]+' || true)
  corpus=$(find "$work" -type f | wc -l)
  printf '%-8s executions %-9s %-22s corpus %s files\n' "$target" "${executions:-?}" \
    "${coverage:-cov: ? ft: ?}" "$corpus"
  if ((status != 0)); then
    echo "fuzz.sh: $target failed (status $status); report in $log, input in $crashes/" >&2
    grep -E 'ERROR|SUMMARY|check failed|undesigned|status [0-9]+:' "$log" | head -n 5 >&2 || true
    failed+=("$target")
  fi
done

if ((${#failed[@]} > 0)); then
  say "crashed: ${failed[*]}"
  exit 1
fi
say "no crash in ${TARGETS[*]}"
