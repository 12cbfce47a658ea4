#!/usr/bin/env bash
# Shared set-up of scripts/demo.sh and scripts/test.sh: installs what is missing to build, test
# and run quarnel (Debian/Ubuntu packages), then configures and builds it with CMake.
# Sourced, it only defines the functions below; run on its own (bash scripts/setup.sh
# [target...]), it installs and builds the Release configuration in build/ (QUARNEL_BUILD_DIR
# overrides the folder).

QUARNEL_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
QUARNEL_BUILD_DIR=${QUARNEL_BUILD_DIR:-$QUARNEL_ROOT/build}

setup_say() {
  printf '== [%d:%02d] %s\n' $((SECONDS / 60)) $((SECONDS % 60)) "$*"
}

# The text as one word for /bin/sh, whatever characters it holds.
shell_quote() {
  local text=$1 q="'"
  printf "'%s'" "${text//$q/$q\\$q$q}"
}

# The Debian packages that provide what is not here yet to build and run quarnel, one per line.
missing_packages() {
  command -v g++ >/dev/null || echo g++
  command -v make >/dev/null || echo make
  command -v cmake >/dev/null || echo cmake
  command -v ninja >/dev/null || echo ninja-build
  [[ -e /usr/include/gtest/gtest.h || -e /usr/local/include/gtest/gtest.h ]] || echo libgtest-dev
  # mmCIF and gzip input: gemmi (header-only), the PEGTL headers its CIF parser needs, and zlib.
  [[ -e /usr/include/gemmi/mmcif.hpp ]] || echo gemmi-dev
  [[ -e /usr/include/tao/pegtl.hpp ]] || echo tao-pegtl-dev
  [[ -e /usr/include/zlib.h ]] || echo zlib1g-dev
  # Secondary structure: DSSP's library (package dssp, which also has mkdssp) on libcifpp.
  [[ -e /usr/include/dssp.hpp ]] && command -v mkdssp >/dev/null || echo dssp
  [[ -e /usr/include/cif++.hpp ]] || echo libcifpp-dev
  # Result files: MD5 of each chain's sequence.
  [[ -e /usr/include/md5.h ]] || echo libmd-dev
  # The Python module: pybind11 and the system Python's headers; NumPy for its residue labels.
  [[ -e /usr/include/pybind11/pybind11.h ]] || echo pybind11-dev
  /usr/bin/python3 -c 'import os, sys, sysconfig
sys.exit(not os.path.exists(os.path.join(sysconfig.get_paths()["include"], "Python.h")))' 2>/dev/null ||
    echo python3-dev
  /usr/bin/python3 -c 'import numpy' 2>/dev/null || echo python3-numpy
}

# What the tests of the tools around quarnel use: the cluster workflow, headless PyMOL for the
# scripts quarnel writes, an SVG renderer for its pictures.
missing_test_packages() {
  command -v snakemake >/dev/null || echo snakemake
  [[ -x /usr/bin/pymol ]] || echo pymol
  command -v rsvg-convert >/dev/null || echo librsvg2-bin
  # The installed library is built against as other programs build: with pkg-config too.
  command -v pkg-config >/dev/null || echo pkg-config
  # The accuracy benchmark reads mmCIF through gemmi's Python module; the cath model's training
  # script runs on scikit-learn and NumPy. Debian's, for the system python3.
  /usr/bin/python3 -c 'import gemmi' 2>/dev/null || echo python3-gemmi
  /usr/bin/python3 -c 'import sklearn, numpy' 2>/dev/null || printf '%s\n' python3-sklearn python3-numpy
}

# apt_install <package...>: non-interactive, through sudo when not root; the package lists are
# refreshed only here, when something is to be installed.
apt_install() {
  local -a apt=(apt-get)
  if ((EUID != 0)); then
    if command -v sudo >/dev/null; then
      apt=(sudo DEBIAN_FRONTEND=noninteractive apt-get)
    else
      echo "setup: need root or sudo to install: $*" >&2
      return 1
    fi
  fi
  if ! command -v apt-get >/dev/null; then
    echo "setup: no apt-get here; install by hand: $*" >&2
    return 1
  fi
  export DEBIAN_FRONTEND=noninteractive
  "${apt[@]}" update -q
  "${apt[@]}" install -y -q --no-install-recommends "$@"
}

# The test suite also fuzzes: clang, and its fuzzer and sanitizer runtimes, which Debian packages
# apart from the compiler (libclang-rt-<version>-dev).
fuzzer_builds() {
  local dir status
  dir=$(mktemp -d "${TMPDIR:-/tmp}/quarnel-fuzzcheck.XXXXXX")
  printf 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }\n' \
    >"$dir/probe.cpp"
  status=0
  clang++ -fsanitize=fuzzer,address,undefined "$dir/probe.cpp" -o "$dir/probe" >/dev/null 2>&1 ||
    status=1
  rm -rf -- "$dir"
  return "$status"
}

install_fuzzing_dependencies() {
  if ! command -v clang++ >/dev/null; then
    setup_say "installing: clang"
    apt_install clang
  fi
  fuzzer_builds && return 0
  local major
  major=$(clang++ --version | sed -n 's/.*clang version \([0-9][0-9]*\)\..*/\1/p' | head -n 1)
  setup_say "installing: libclang-rt-$major-dev"
  apt_install "libclang-rt-$major-dev"
  fuzzer_builds || {
    echo "setup: clang cannot build libFuzzer targets here" >&2
    return 1
  }
}

# install_dependencies [--tests]: what building and running needs, and with --tests what the
# test suite needs besides.
install_dependencies() {
  local -a packages
  mapfile -t packages < <(missing_packages; [[ ${1:-} != --tests ]] || missing_test_packages)
  if ((${#packages[@]} == 0)); then
    setup_say "dependencies present"
    return 0
  fi
  setup_say "installing: ${packages[*]}"
  apt_install "${packages[@]}"
}

# cmake_configure <build folder> [cmake options...]: with Ninja when it is there, which compiles
# the files of every layer's library at once where Make finishes one library before starting
# the next; a folder configured earlier keeps its generator.
cmake_configure() {
  local dir=$1
  shift
  local -a generator=()
  [[ -e $dir/CMakeCache.txt ]] || ! command -v ninja >/dev/null || generator=(-G Ninja)
  cmake -S "$QUARNEL_ROOT" -B "$dir" "${generator[@]}" "$@"
}

# configure_and_build <build folder> [cmake options...]: configures and builds every target.
configure_and_build() {
  local dir=$1
  shift
  setup_say "configuring $dir $*"
  cmake_configure "$dir" "$@"
  build_targets "$dir"
}

# build_targets <build folder> [target...]: all targets when none is named.
build_targets() {
  local dir=$1
  shift
  local -a targets=()
  (($# == 0)) || targets=(--target "$@")
  setup_say "building $dir ${*:-(all targets)}"
  cmake --build "$dir" --parallel "$(nproc 2>/dev/null || echo 2)" "${targets[@]}"
}

# setup_release_build [target...]: dependencies, then the Release build in QUARNEL_BUILD_DIR.
setup_release_build() {
  install_dependencies
  setup_say "configuring $QUARNEL_BUILD_DIR"
  cmake_configure "$QUARNEL_BUILD_DIR" -DCMAKE_BUILD_TYPE=Release
  build_targets "$QUARNEL_BUILD_DIR" "$@"
}

if [[ ${BASH_SOURCE[0]} == "$0" ]]; then
  set -euo pipefail
  setup_release_build "$@"
fi
