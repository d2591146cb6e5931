#!/usr/bin/env bash
# Runs the commands by which docs/host-integration.md tells a host to test its own libraries, on copies of ours.
#   check_contract.sh FOLDER-OF-PROGRAMS LIBRARY...
set -euo pipefail
document=$(cd "$(dirname "$0")/../.." && pwd)/docs/host-integration.md
bin=$1 own=$(mktemp -d) location=memory:
shift
trap 'rm -rf "$own"' EXIT
for library in "$@"; do
    cp "$library" "$own/$(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')"
done

# The blocks below the mark, without the line that says where things are.
commands=$(awk '/^<!-- tested -->$/ {marked = 1; next} /^```/ {inside = marked && /^```sh$/; marked = 0; next} inside' \
    "$document" | grep -v '^own=')
output=$(set -x && eval "$commands")
echo "$output"
taken=$(grep -c "=> $own/" <<<"$output" || true)
passed=$(grep -c '^\[  PASSED  \] [1-9]' <<<"$output" || true)
failed=$(grep -c '^\[  FAILED  \]' <<<"$output" || true)
programs=$(grep -c 'contract_[a-z]* \\\?$\|contract_base --' <<<"$commands" || true)
((taken == $#)) || { echo "check_contract: $taken of $# libraries were taken from $own" >&2 && exit 1; }
((passed == programs && programs > 0 && failed == 0)) || {
    echo "check_contract: $passed of $programs programs passed" >&2
    exit 1
}
