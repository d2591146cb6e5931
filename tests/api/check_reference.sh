#!/usr/bin/env bash
# Makes the reference anew, somewhere else, and prints what Doxygen has to complain of.
# usage: check_reference.sh DOXYGEN SETTINGS...
set -uo pipefail
doxygen=$1
shift
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
faults=0
for settings in "$@"; do
    mkdir -p "$folder/$(basename "$settings")"
    (cat "$settings" && echo "OUTPUT_DIRECTORY = $folder/$(basename "$settings")") | "$doxygen" - ||
        { echo "FAULT: $settings: not without a warning" >&2 && faults=$((faults + 1)); }
    [[ -s $folder/$(basename "$settings")/html/index.html ]] ||
        { echo "FAULT: $settings: nothing was made" >&2 && faults=$((faults + 1)); }
done
((faults == 0 && $# > 0))
