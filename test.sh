#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests.
#
#   ./test.sh              what every change has to pass: the suite as developers build it and under sanitizers,
#                          static analysis, and a few seconds of each fuzzer
#   ./test.sh --long       that, and what takes hours: coverage, every failure of the host at every call, every
#                          interruption at every notification, ten further seeds of chaos, ten minutes of each
#                          fuzzer, and an hour of measuring
#   ./test.sh <preset>...  only the suite of these presets (dev, release, asan)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

suite() {
  local preset=$1
  echo "== $preset: configure and build"
  cmake --preset "$preset"
  cmake --build --preset "$preset"
  echo "== $preset: tests"
  ctest --preset "$preset" --parallel "$(nproc)"
}

everyday() {
  suite dev
  scripts/lint.sh
  suite asan
  scripts/fuzz.sh
}

long() {
  scripts/coverage.sh
  DFLOCATE_ALL_FAULTS=1 QT_QPA_PLATFORM=offscreen build/dev/tests/tst_failuresatsetup
  DFLOCATE_ALL_FAULTS=1 LSAN_OPTIONS=suppressions=tests/lsan.supp:print_suppressions=0 QT_QPA_PLATFORM=offscreen \
    build/asan/tests/tst_interruptions
  local n
  for n in {1..10}; do
    LSAN_OPTIONS=suppressions=tests/lsan.supp:print_suppressions=0 QT_QPA_PLATFORM=offscreen \
      build/asan/bin/chaos --operations 500000
  done
  scripts/fuzz.sh 600
  cmake --preset release
  cmake --build --preset release --target soak
  QT_QPA_PLATFORM=offscreen build/release/bin/soak --minutes 60
}

scripts/install-packages.sh test
scripts/check-format.sh
case "${1:-}" in
  "") everyday ;;
  --long)
    everyday
    long
    ;;
  *)
    for preset in "$@"; do
      suite "$preset"
    done
    ;;
esac
