#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite: as developers build it and under sanitizers.
#
#   ./test.sh              everything
#   ./test.sh <preset>...  only these presets (dev, release, asan)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

presets=("$@")
if [ "${#presets[@]}" -eq 0 ]; then
  presets=(dev asan)
fi

scripts/install-packages.sh test
scripts/check-format.sh

for preset in "${presets[@]}"; do
  echo "== $preset: configure and build"
  cmake --preset "$preset"
  cmake --build --preset "$preset"
  echo "== $preset: tests"
  ctest --preset "$preset" --parallel "$(nproc)"
done
