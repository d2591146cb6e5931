#!/usr/bin/env bash
# Compiles the public header alone, without a warning, in every language and with every compiler that programs use it
# with; a program that includes only it, twice.
# usage: check_header.sh HEADER C-COMPILER C++-COMPILER [FLAG...]
set -uo pipefail
header=$1 c=$2 cxx=$3
shift 3
faults=0 compiled=0

# compile COMPILER LANGUAGE STANDARD FLAG...
compile() {
    local compiler=$1 language=$2 standard=$3
    shift 3
    printf '%s\n' "#include \"$header\"" "#include \"$header\"" 'int main(void) { return 0; }' |
        "$compiler" "$@" -x "$language" -std="$standard" -Wall -Wextra -pedantic -Werror -fsyntax-only - ||
        { echo "FAULT: $compiler $* -std=$standard" >&2 && faults=$((faults + 1)); }
    compiled=$((compiled + 1))
}

for pair in "$c $cxx" "clang clang++"; do
    read -r c cxx <<<"$pair"
    command -v "$c" >/dev/null && command -v "$cxx" >/dev/null || continue
    compile "$c" c c11 "$@"
    for standard in c++17 c++20; do
        compile "$cxx" c++ "$standard" "$@"
    done
done
echo "compiled $compiled times"
((faults == 0 && compiled >= 3))
