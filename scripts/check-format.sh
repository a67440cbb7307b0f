#!/usr/bin/env bash
# Says which source files are not formatted as .clang-format has it; prints nothing when all are.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

git ls-files -z -- '*.cpp' '*.h' | xargs -0 --no-run-if-empty clang-format --dry-run --Werror
