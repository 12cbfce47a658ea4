#!/usr/bin/env bash
# The installed programs, run as users run them: installed into a fresh prefix, moved elsewhere,
# reached through a link, quarnel hands mmCIF and gzip inputs that need DSSP's library to the
# installed quarnel-full and prints what the build tree's quarnel prints; with no quarnel-full
# to run, it fails with status 1 and names the path it tried first.
# Usage: relocation_test.sh <build folder> <test data folder>. Status 0 when every check holds.
set -euo pipefail

build=${1:?usage: relocation_test.sh <build folder> <test data folder>}
data=${2:?usage: relocation_test.sh <build folder> <test data folder>}
scratch=$(mktemp -d "${TMPDIR:-/tmp}/quarnel-install.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
unset DSSP_PATH  # DSSP from the library, which only quarnel-full holds
failures=0

fail() {
  echo "FAILED: $*" >&2
  failures=$((failures + 1))
}

# The results of a run without their time_sec column, which differs from run to run.
results() {
  local program=$1
  shift
  (cd "$scratch/work" && "$program" --format tsv "$@" | cut -f1-6,8-)
}

mkdir "$scratch/work"
cp "$data/formats/2w83_c.cif" "$data/formats/2w83_c.pdb.gz" "$scratch/work/"
inputs=(2w83_c.cif 2w83_c.pdb.gz)
expected=$(results "$build/quarnel" "${inputs[@]}")
[[ $(grep -c $'\t2w83_c.pdb.gz\t' <<<"$expected") == 1 ]] || fail "the build tree's quarnel judged no chain: $expected"

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
[[ -x $scratch/prefix/bin/quarnel ]] || fail "no bin/quarnel"
[[ -x $scratch/prefix/libexec/quarnel/quarnel-full ]] || fail "no libexec/quarnel/quarnel-full"
[[ ! -e $scratch/prefix/bin/quarnel-full ]] || fail "quarnel-full installed among the users' programs"

[[ $(results "$scratch/prefix/bin/quarnel" "${inputs[@]}") == "$expected" ]] || fail "installed: other results"

mv "$scratch/prefix" "$scratch/moved"
[[ $(results "$scratch/moved/bin/quarnel" "${inputs[@]}") == "$expected" ]] || fail "moved: other results"

mkdir "$scratch/links"
ln -s "$scratch/moved/bin/quarnel" "$scratch/links/quarnel"
[[ $(results "$scratch/links/quarnel" "${inputs[@]}") == "$expected" ]] || fail "through a link: other results"

rm "$scratch/moved/libexec/quarnel/quarnel-full"
status=0
(cd "$scratch/work" && "$scratch/moved/bin/quarnel" --format tsv 2w83_c.cif >/dev/null 2>"$scratch/err") || status=$?
[[ $status == 1 ]] || fail "without quarnel-full: status $status, not 1"
grep -qF "quarnel: DSSP's library is in $scratch/moved/bin/quarnel-full, which cannot be run" "$scratch/err" ||
  fail "without quarnel-full: $(cat "$scratch/err")"

((failures == 0)) && echo "installed, moved and linked: the same results as the build tree"
exit $((failures > 0))
