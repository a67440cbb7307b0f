#!/usr/bin/env bash
# Prints what a component library needs of the host: the symbols it leaves to each host library, demangled.
#
#   host-symbols.sh <library folder> <component library>
#
# The folder is the one with the host's libraries. Types (their run-time type information, tables of virtual functions) are
# not listed: whether a compiler needs them is a matter of its optimisation, and no type is used without its functions.
set -euo pipefail
export LC_ALL=C
folder=$1
component=$2

needed=$(mktemp)
trap 'rm -f "$needed"' EXIT
nm -D --undefined-only "$component" | awk '{sub(/@.*/, "", $2); print $2}' | sort -u >"$needed"

# The libraries that the component names itself and that are the host's.
for library in $(objdump -p "$component" | awk '$1 == "NEEDED" {print $2}' | sort); do
  [[ -e "$folder/$library" ]] || continue
  echo "[$library]"
  nm -D --defined-only "$folder/$library" | awk '{sub(/@.*/, "", $3); print $3}' | sort -u |
    comm -12 - "$needed" | c++filt | grep -Ev '^(typeinfo|typeinfo name|vtable|VTT|construction vtable) for ' | sort -u || true
  echo
done
