#!/usr/bin/env bash
# Checks the tree at $1: no promises left in code, no disabled tests, no path of the machine that it was written on,
# every top-level folder in the README's map, which names none that is gone, and no folder of the tool that includes
# what is above it. Prints what is wrong.
set -euo pipefail
cd "$1"
wrong=0

complain() {
    printf '%s\n' "$@"
    wrong=1
}

# The names of the files that make up the tree, one per line: what git tracks or would, else all but build/.
files() {
    git ls-files --cached --others --exclude-standard -- . ':!build' 2>/dev/null |
        while IFS= read -r file; do [[ ! -f $file ]] || printf '%s\n' "$file"; done | grep . ||
        find . -name .git -prune -o -path ./build -prune -o -type f -printf '%P\n'
}

# forbid TEXT PATTERN [FILE-PATTERN]: no text file whose name matches may have a line that matches.
forbid() {
    local hits
    hits=$(files | { grep -E -e "${3:-.}" || true; } | grep -v '^tests/house/check_house\.sh$' |
        xargs -r -d '\n' grep -nIE -e "$2" -- /dev/null || true)
    [[ -z $hits ]] || complain "$1:" "$hits"
}

code='\.(h|cc|c|in|def|cmake)$|CMakeLists\.txt$|^(quickstart|run-tests|run-bench)$|^scripts/|^\.ci/'
forbid "a promise left in the code" '\b(TODO|FIXME|XXX|HACK)\b' "$code"
forbid "a test that does not run" '\bDISABLED_[A-Za-z]|GTEST_SKIP\(' "$code"
forbid "a path of this checkout" "(^|[^A-Za-z0-9_.})@-])$(printf '%s' "$PWD" | sed 's/[][\.*^$+?(){}|]/\\&/g')(/|\b)"
forbid "a path of somebody's home" '(^|[^A-Za-z0-9_.])/(home|Users)/[a-z]'
forbid "a carriage return in code" $'\r' "$code"

map=$(sed -n 's/^| `\([^`/]*\)\/[^`]*`.*/\1/p' README.md | sort -u)
folders=$(files | sed -n 's|/.*||p' | sort -u | while read -r name; do [[ ! -d $name ]] || echo "$name"; done)
difference=$(diff <(printf '%s\n' "$map") <(printf '%s\n' "$folders") || true)
[[ -z $difference ]] || complain "README.md's map (<) and the folders that exist (>) differ:" "$difference"

# The folders of the tool, each a row of a table in docs/architecture.md, include only from those that stand before
# them there. Of the headers beside the folders two are for all of them; the others are above.
tool=tools/zxpolicy later=()
mapfile -t order < <(sed -n "s,^| \`$tool/\([a-z]*\)/\` |.*,\1,p" docs/architecture.md | tac)
((${#order[@]} > 1)) || complain "docs/architecture.md does not name the folders of $tool"
for folder in "${order[@]}"; do
    for name in "${later[@]}"; do
        hits=$(grep -rn "#include \"$name/" "$tool/$folder" || true)
        [[ -z $hits ]] || complain "$tool/$folder includes from a folder above it:" "$hits"
    done
    later+=("$folder")
done
mapfile -t top < <(files | sed -n "s,^$tool/\([a-z_]*\.h\)$,\1,p" | grep -vx 'tool_error\.h\|result_names\.h')
((${#top[@]} > 1)) || complain "$tool has no headers beside its folders"
for folder in $(files | sed -n "s,^$tool/\([^/]*\)/.*\.\(h\|cc\)$,\1,p" | sort -u); do
    [[ " ${order[*]} " == *" $folder "* ]] || complain "docs/architecture.md has no row for $tool/$folder"
    hits=$(grep -rnE "#include \"($(IFS='|' && echo "${top[*]//./\\.}"))\"" "$tool/$folder" || true)
    [[ -z $hits ]] || complain "$tool/$folder includes what is above the folders:" "$hits"
done

for file in README.md quickstart run-tests run-bench scripts/setup .ci/run; do
    [[ -s $file ]] || complain "$file is missing or empty"
    [[ $file == *.md || -x $file ]] || complain "$file is not executable"
done
exit $wrong
