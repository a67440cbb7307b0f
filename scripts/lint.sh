#!/usr/bin/env bash
# Static analysis of all source files, with clang-tidy and clazy; any finding fails.
#
#   scripts/lint.sh         the host, the component, the workbench and the benchmarks
#   scripts/lint.sh --all   the tests, too, and with the analyzer's full depth
#
# Looks at the last build of the preset "dev", and of "bench" where there is one: their generated headers are needed. What is
# unchanged since it was found clean is not analysed again.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-packages.sh lint
if [ ! -f build/dev/build.ninja ]; then
  echo "Nothing is built yet: cmake --preset dev && cmake --build --preset dev" >&2
  exit 1
fi
builds=(build/dev)
[ ! -f build/bench/build.ninja ] || builds+=(build/bench)
exec python3 scripts/lint.py "${builds[@]}" "$@"
