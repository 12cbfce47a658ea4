#!/usr/bin/env bash
# Installs what is missing, builds quarnel and runs the whole test suite: first the Release
# build, then the same suite under AddressSanitizer and UndefinedBehaviorSanitizer, then the
# tests that run the engine and DSSP on several threads under ThreadSanitizer, then each fuzz
# target for a bounded time.
# Fails (non-zero) as soon as one step fails.
# QUARNEL_BUILD_DIR, QUARNEL_ASAN_BUILD_DIR and QUARNEL_TSAN_BUILD_DIR override the build folders
# (build/, build-asan/, build-tsan/); QUARNEL_SANITIZER_SUITE=0 skips both sanitizer builds.
set -euo pipefail

# shellcheck source=scripts/setup.sh
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
QUARNEL_ASAN_BUILD_DIR=${QUARNEL_ASAN_BUILD_DIR:-$QUARNEL_ROOT/build-asan}
QUARNEL_TSAN_BUILD_DIR=${QUARNEL_TSAN_BUILD_DIR:-$QUARNEL_ROOT/build-tsan}

run_suite() {
  local dir=$1
  setup_say "tests in $dir"
  (cd "$dir" && ctest --output-on-failure -j2)
}

# 1. Release build: the configuration users run, with the numbers the reports are checked against.
install_dependencies --tests
setup_release_build
run_suite "$QUARNEL_BUILD_DIR"

# 2. Sanitizer build: the same suite, stopping at the first memory error or undefined behaviour
# (the build makes every sanitizer report fatal).
if [[ ${QUARNEL_SANITIZER_SUITE:-1} != 0 ]]; then
  configure_and_build "$QUARNEL_ASAN_BUILD_DIR" -DCMAKE_BUILD_TYPE=Release -DQUARNEL_SANITIZE=ON
  ASAN_OPTIONS=${ASAN_OPTIONS:-detect_stack_use_after_return=1} \
    UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1} \
    run_suite "$QUARNEL_ASAN_BUILD_DIR"
fi

# 3. ThreadSanitizer build of the tests that run on several threads: the partition engine's
# samples and domains (test_run) and the DSSP library shared by threads (test_secondary).
if [[ ${QUARNEL_SANITIZER_SUITE:-1} != 0 ]]; then
  setup_say "configuring $QUARNEL_TSAN_BUILD_DIR"
  cmake_configure "$QUARNEL_TSAN_BUILD_DIR" -DCMAKE_BUILD_TYPE=Release -DQUARNEL_TSAN=ON
  build_targets "$QUARNEL_TSAN_BUILD_DIR" test_run test_secondary
  setup_say "threaded tests in $QUARNEL_TSAN_BUILD_DIR"
  TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1} "$QUARNEL_TSAN_BUILD_DIR/tests/test_run"
  TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1} "$QUARNEL_TSAN_BUILD_DIR/tests/test_secondary"
fi

# 4. Every fuzz target, each for a bounded time (QUARNEL_FUZZ_SECONDS, default 10; 0 skips them). The
# long run is: bash scripts/fuzz.sh 600
# On a machine slower than the one this was timed on, fuzzing gets what is left of the suite's
# five minutes (QUARNEL_FUZZ_DEADLINE; at least 3 seconds a target).
if [[ ${QUARNEL_FUZZ_SECONDS:-10} != 0 ]]; then
  install_fuzzing_dependencies
  QUARNEL_FUZZ_DEADLINE=${QUARNEL_FUZZ_DEADLINE:-$(($(date +%s) - SECONDS + 275))} \
    bash "$QUARNEL_ROOT/scripts/fuzz.sh" "${QUARNEL_FUZZ_SECONDS:-10}"
fi

setup_say "all tests passed"
