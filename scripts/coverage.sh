#!/usr/bin/env bash
# Measures how much of host and component their own tests run through, and fails below 95 % of lines or 85 % of branches.
#
#   scripts/coverage.sh   builds the preset "coverage", runs its tests, and reports every line that no test reaches
#
# The workbench's tests are left out: what they run through on the way is not tested by them. Branches are the decisions of
# the source: those that the compiler adds for exceptions thrown by a call, and those on lines without code, do not count.
# docs/coverage-exceptions.md says why what is left is not covered. Pages with every line: build/coverage/report/index.html
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-packages.sh coverage

build=build/coverage
cmake --preset coverage
cmake --build --preset coverage
# Counters of earlier runs, and of files that are gone.
find "$build" -name '*.gcda' -delete
for subject in host component faults; do
  ctest --test-dir "$build/tests/$subject" --parallel "$(nproc)" --output-on-failure --no-tests=error
done

rm -rf "$build/report"
mkdir "$build/report"
gcovr --root . --object-directory "$build" --filter host/ --filter userinterface/ -j "$(nproc)" \
  --exclude-throw-branches --exclude-unreachable-branches \
  --json "$build/report/coverage.json" "$build/host" "$build/userinterface" "$build/tests/host" \
  "$build/tests/component" "$build/tests/faults"
report=(gcovr --root . --add-tracefile "$build/report/coverage.json")
"${report[@]}" --html-details "$build/report/index.html"
"${report[@]}" --txt --branches
"${report[@]}" --txt --print-summary --fail-under-line 95 --fail-under-branch 85
