#!/usr/bin/env bash
# Installs a build, builds the component on its own against the installed host layer, and measures with it.
#
#   build-against-installed-host.sh <source folder> <build folder>
set -euo pipefail
source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A prefix with a blank, as on other people's machines.
prefix="$work/other host"
cmake --install "$build" --prefix "$prefix" >"$work/install.log"
cmake -S "$source/userinterface/guicomponents/dflocatecomponent" -B "$work/component" -G Ninja \
  -DCMAKE_BUILD_TYPE=Release "-DCMAKE_PREFIX_PATH=$prefix"
cmake --build "$work/component"

"$prefix/bin/dflocate-workbench" --headless --json --component "$work/component/lib/libDFLocateComponent.so" >"$work/own.json"
"$prefix/bin/dflocate-workbench" --headless --json >"$work/installed.json"
grep -q '"azimuth": [0-9]' "$work/own.json"
cmp "$work/own.json" "$work/installed.json"
echo "The component built on its own measures the same as the installed one."
