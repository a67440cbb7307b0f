#!/usr/bin/env bash
# Measures how fast the parts are and compares that with the goals in benchmarks/goals.csv.
#
#   benchmarks/run.sh               all subjects
#   benchmarks/run.sh <subject>...  only these
#
# Each program runs five times, as a process of its own. Ratios are formed inside each run, and their median counts. Ends
# with 1 when a goal is missed. The measurements stay in build/bench/measurements.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

runs=5
build=build/bench
measurements=$build/measurements

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

export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
unset QT_HASH_SEED # a fixed one would flatter the hash tables
rm -rf "$measurements"
mkdir -p "$measurements"
for ((run = 1; run <= runs; ++run)); do
  for subject in "${subjects[@]}"; do
    echo "Run $run of $runs: $subject" >&2
    # What happens on the machine meanwhile should strike a benchmark and its reference alike: short turns, mixed.
    "$build/benchmarks/bench_$subject" --benchmark_format=json --benchmark_repetitions=5 --benchmark_min_time=0.05 \
      --benchmark_enable_random_interleaving=true >"$measurements/$subject.$run.json"
  done
done

exec "$build/bin/compare-benchmarks" benchmarks/goals.csv "$measurements" "${subjects[@]}"
