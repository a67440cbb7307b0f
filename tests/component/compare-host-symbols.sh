#!/usr/bin/env bash
# Compares what the component needs of the host with the list in the repository.
#
#   compare-host-symbols.sh <source folder> <library folder> <component library>
set -euo pipefail
source=$1
folder=$2
component=$3
list=userinterface/guicomponents/dflocatecomponent/hostsymbols.txt

if ! diff -u --label "$list" --label "the component library" "$source/$list" \
  <("$source/scripts/host-symbols.sh" "$folder" "$component"); then
  cat <<EOF

The component needs other operations of the host than before: "+" is new, "-" is no longer needed. Every other host has to
offer what is new. If that is meant:

    scripts/host-symbols.sh $folder $component >$list
EOF
  exit 1
fi
