#!/usr/bin/env bash
# Runs benchmark programs that are built and compares what they measure with goals.
#
#   benchmarks/measure.sh <build folder> <goals> <subject>...
#
# Each program runs five times, as a process of its own. Ratios are formed inside each run, and their median counts. A
# program that fails or hangs misses all its goals; the table has the others all the same. Ends with 1 when a goal is
# missed. The measurements stay in <build folder>/measurements.
set -euo pipefail

runs=5
seconds=300 # for one run of one program; the longest takes less than a minute
build=$1
goals=$2
subjects=("${@:3}")
measurements=$build/measurements

measure() {
  # What happens on the machine meanwhile should strike a benchmark and its reference alike: short turns, mixed.
  timeout --kill-after=10 "$seconds" "$build/benchmarks/bench_$1" --benchmark_format=json --benchmark_repetitions=5 \
    --benchmark_min_time=0.05 --benchmark_enable_random_interleaving=true
}

export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
unset QT_HASH_SEED # a fixed one would flatter the hash tables
rm -rf "$measurements"
mkdir -p "$measurements"
declare -A failed
for ((run = 1; run <= runs; ++run)); do
  for subject in "${subjects[@]}"; do
    if [ -n "${failed[$subject]:-}" ]; then continue; fi
    echo "Run $run of $runs: $subject" >&2
    measure "$subject" >"$measurements/$subject.$run.json" || failed[$subject]=$?
  done
done

for subject in "${!failed[@]}"; do
  rm -f "$measurements/$subject".*.json
done
"$build/bin/compare-benchmarks" "$goals" "$measurements" "${subjects[@]}" || missed=$?
for subject in "${!failed[@]}"; do
  echo "$subject failed with exit code ${failed[$subject]}" >&2
  missed=${missed:-1}
done
exit "${missed:-0}"
