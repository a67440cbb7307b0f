#!/usr/bin/env bash
# Builds the workbench as operators run it and starts it with all arguments; ./run.sh --help lists them.
#
# Installs missing packages first. Only the program writes to the standard output stream.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
build="$root/build/release"
mkdir -p "$build"
log="$build/run.log"

# Runs a step quietly; when it fails, shows what it said.
step() {
  if ! "$@" >"$log" 2>&1; then
    cat "$log" >&2
    echo "This step failed: $*" >&2
    exit 1
  fi
}

if [ ! -x "$build/bin/dflocate-workbench" ]; then
  echo "Building the workbench; the first time this takes a few minutes." >&2
fi
step "$root/scripts/install-packages.sh" build
# Presets are found in the current folder only; files named by the caller are relative to the caller's folder.
(cd -- "$root" && step cmake --preset release)
step cmake --build "$build" --target dflocate-workbench DFLocateComponent

exec "$build/bin/dflocate-workbench" "$@"
