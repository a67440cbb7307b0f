#!/usr/bin/env bash
# Builds the fuzzers and runs each over its corpus and then on new inputs.
#
#   scripts/fuzz.sh [seconds] [subject]...   15 seconds of new inputs unless told otherwise; all subjects
#
# An input that breaks a promise is kept in build/fuzz/findings and named with the command that replays it; the exit code is 1
# then. docs/fuzzing.md tells what is checked.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds=${1:-15}
if ! [[ $seconds =~ ^[0-9]+$ ]] || [ "$seconds" -eq 0 ]; then
  echo "usage: $0 [seconds of new inputs for each subject] [subject]..." >&2
  exit 2
fi
shift $(($# > 0 ? 1 : 0))
subjects=("$@")
if [ "${#subjects[@]}" -eq 0 ]; then
  for source in fuzz/corpus/*/; do
    subjects+=("$(basename "$source")")
  done
fi

scripts/install-packages.sh fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

findings=build/fuzz/findings
# In memory where there is such a place: most of the time of a store is its disk's.
work=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work
mkdir -p "$findings"
export LSAN_OPTIONS="suppressions=$PWD/fuzz/lsan.supp:print_suppressions=0"
export LC_ALL=C.UTF-8

# Bytes of the longest inputs: longer ones are more of the same.
declare -A longest=([form_description]=8192 [form_script]=1024 [history_file]=16384 [history_rows]=1024 [result_texts]=64
  [scenario]=8192)

# One subject: its corpus, then new inputs. Prints one line; keeps the log beside the findings.
run() {
  local subject=$1 log="$findings/$1.log" options=()
  local program="build/fuzz/fuzz/fuzz_$subject"
  [ ! -f "fuzz/dictionaries/$subject.dict" ] || options+=("-dict=fuzz/dictionaries/$subject.dict")
  mkdir -p "$work/$subject"
  if "$program" -max_total_time="$seconds" -max_len="${longest[$subject]:-2048}" -timeout=10 -rss_limit_mb=4096 \
    -artifact_prefix="$findings/$subject-" -print_final_stats=1 "${options[@]}" "$work/$subject" "fuzz/corpus/$subject" \
    >"$log" 2>&1; then
    printf '%-17s %10s inputs\n' "$subject" "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
    return 0
  fi
  local input
  input=$(sed -n 's/^.*Test unit written to //p' "$log" | tail -n 1)
  echo "$subject: a promise is broken; the log is $log" >&2
  grep -E 'does not hold|ERROR:|runtime error|SUMMARY' "$log" | head -n 5 >&2 || true
  [ -z "$input" ] || echo "Replay: LSAN_OPTIONS=suppressions=fuzz/lsan.supp $program $input" >&2
  return 1
}

for subject in "${subjects[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do
    wait -n || true
  done
  run "$subject" || touch "$work/failed" &
done
wait
[ ! -e "$work/failed" ]
