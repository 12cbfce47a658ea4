#!/usr/bin/env bash
# Installs what is missing, builds quarnel and runs the whole test suite: first the Release
# build, then the same suite under AddressSanitizer and UndefinedBehaviorSanitizer, then each
# fuzz target for a bounded time.
# Fails (non-zero) as soon as one step fails.
# QUARNEL_BUILD_DIR and QUARNEL_ASAN_BUILD_DIR override the build folders (build/, build-asan/);
# QUARNEL_SANITIZER_SUITE=0 skips the sanitizer build.
set -euo pipefail

# shellcheck source=scripts/setup.sh
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
QUARNEL_ASAN_BUILD_DIR=${QUARNEL_ASAN_BUILD_DIR:-$QUARNEL_ROOT/build-asan}

run_suite() {
  local dir=$1
  setup_say "tests in $dir"
  (cd "$dir" && ctest --output-on-failure -j2)
}

# 1. Release build: the configuration users run, with the numbers the reports are checked against.
setup_release_build
run_suite "$QUARNEL_BUILD_DIR"

# 2. Sanitizer build: the same suite, stopping at the first memory error or undefined behaviour
# (the build makes every sanitizer report fatal).
if [[ ${QUARNEL_SANITIZER_SUITE:-1} != 0 ]]; then
  configure_and_build "$QUARNEL_ASAN_BUILD_DIR" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DQUARNEL_SANITIZE=ON
  ASAN_OPTIONS=${ASAN_OPTIONS:-detect_stack_use_after_return=1} \
    UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1} \
    run_suite "$QUARNEL_ASAN_BUILD_DIR"
fi

# 3. Both fuzz targets, each for a bounded time (QUARNEL_FUZZ_SECONDS, default 30; 0 skips them). The
# long run is: bash scripts/fuzz.sh 600
if [[ ${QUARNEL_FUZZ_SECONDS:-30} != 0 ]]; then
  install_fuzzing_dependencies
  bash "$QUARNEL_ROOT/scripts/fuzz.sh" "${QUARNEL_FUZZ_SECONDS:-30}"
fi

setup_say "all tests passed"
