#!/usr/bin/env bash
# The installed library as another program uses it: `cmake --install` into a fresh prefix, then
# the README's C++ example built against it once with find_package(quarnel) and once with
# pkg-config; each must print, for real structures, the rows the quarnel program prints with
# --format tsv. The installed quarnel must run from the prefix, and from the prefix moved.
# Usage: install_test.sh <build folder> <test data folder>
set -euo pipefail
build=$(cd "${1:?usage: install_test.sh <build folder> <data folder>}" && pwd)
data=$(cd "${2:?usage: install_test.sh <build folder> <data folder>}" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d "${TMPDIR:-/tmp}/quarnel-install.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
# The first C++ block of the README's "Use from C++".
awk '/^## Use from C\+\+/ { inside = 1 } inside && /^```$/ && started { exit }
     inside && started { print } inside && /^```cpp$/ { started = 1 }' "$here/../../README.md" >"$scratch/chop.cpp"
[[ -s $scratch/chop.cpp ]] || { echo "no C++ example in README.md" >&2; exit 1; }
prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

inputs=("$data/2yex.pdb" "$data/1cuk.pdb" "$data/formats/2w83_c.cif" "$data/formats/2w83_c.pdb.gz")
# Rows without the header, the record line and the time column.
rows() { grep -v -e '^#' -e '^chain_id' | awk -F'\t' 'BEGIN { OFS = "\t" } { $7 = "T"; print }'; }
"$build/quarnel" --format tsv --quiet "${inputs[@]}" | rows >"$scratch/expected"
[[ -s $scratch/expected ]] || { echo "no rows from $build/quarnel" >&2; exit 1; }

failed=0
check() {  # <how> <program>
  if "$2" "${inputs[@]}" | rows >"$scratch/$1.rows" && cmp -s "$scratch/expected" "$scratch/$1.rows"; then
    echo "$1: the command line's rows"
  else
    echo "$1: rows differ from the command line's" >&2
    diff "$scratch/expected" "$scratch/$1.rows" >&2 || true
    failed=1
  fi
}

cmake -S "$here" -B "$scratch/with-cmake" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$prefix" \
  -DCHOP_SOURCE="$scratch/chop.cpp" >/dev/null
cmake --build "$scratch/with-cmake" >/dev/null
check find_package "$scratch/with-cmake/chop"

pc_dir=$(dirname "$(find "$prefix" -name quarnel.pc)")
# shellcheck disable=SC2046 # pkg-config's words are meant to be split
c++ -O1 -o "$scratch/chop-pc" "$scratch/chop.cpp" $(PKG_CONFIG_PATH=$pc_dir pkg-config --cflags --libs quarnel)
check pkg-config "$scratch/chop-pc"

# The Python module where it was installed, with its DSSP helper found under the prefix.
python_check() {  # <how> <prefix>
  local module
  module=$(find "$2" -name '_quarnel*.so' -print -quit)
  [[ -n $module ]] || return 0  # built without the module
  local chopping
  chopping=$(cd "$data" && PYTHONPATH=$(dirname "$(dirname "$module")") /usr/bin/python3 -c \
    "import quarnel; print(quarnel.chop('2yex.pdb').chopping)")
  if [[ $chopping == "$(awk -F'\t' '$1 == "2yexA" { print $5 }' "$scratch/expected")" ]]; then
    echo "$1: the command line's chopping"
  else
    echo "$1: $chopping is not the command line's chopping" >&2
    failed=1
  fi
}
python_check python "$prefix"

# The prefix moved elsewhere: the package still finds itself.
mv "$prefix" "$scratch/moved"
python_check "python, moved" "$scratch/moved"
cmake -S "$here" -B "$scratch/moved-cmake" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/moved" \
  -DCHOP_SOURCE="$scratch/chop.cpp" >/dev/null
cmake --build "$scratch/moved-cmake" >/dev/null
check moved "$scratch/moved-cmake/chop"
exit $failed
