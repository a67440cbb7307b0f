#!/usr/bin/env bash
# Measures how fast the parts are and compares that with the goals in benchmarks/goals.csv.
#
#   benchmarks/run.sh               all subjects, about a quarter of an hour
#   benchmarks/run.sh <subject>...  only these
#
# measure.sh says how. Ends with 1 when a goal is missed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build=build/bench

# Only the table goes to the standard output stream.
{
  scripts/install-packages.sh bench
  cmake --preset bench
  cmake --build --preset bench
} >&2

subjects=("$@")
if [ "${#subjects[@]}" -eq 0 ]; then
  mapfile -t subjects < <(cd "$build/benchmarks" && find . -type f -name 'bench_*' -executable -printf '%f\n' | sed 's/^bench_//' | sort)
fi

exec benchmarks/measure.sh "$build" benchmarks/goals.csv "${subjects[@]}"
