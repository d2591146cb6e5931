#!/usr/bin/env bash
# Loads the completion and asks it as bash would: every command and option of --help is offered, and no other; files,
# stores and the names of lists are.
#   check_completion.sh PROGRAM COMPLETION
set -euo pipefail

(($# == 2)) || { echo "usage: check_completion.sh PROGRAM COMPLETION" >&2 && exit 2; }
program=$(realpath "$1")
completion=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
unset ZXPOLICY_STORE
wrong=0

complain() {
    echo "check_completion: $*" >&2
    wrong=1
}

# shellcheck source=/dev/null
source "$completion"
complete -p zxpolicy | grep -q -- '-F _zxpolicy zxpolicy' || complain "it registers nothing"

# offered WORD...: what is offered for the last word, sorted, on one line. The words are split as bash does it.
offered() {
    local word part
    COMP_LINE="$*" COMP_WORDS=() COMPREPLY=()
    COMP_POINT=${#COMP_LINE}
    for word in "$@"; do
        while [[ $word == *[:=]* ]]; do
            part=${word%%[:=]*}
            [[ -z $part ]] || COMP_WORDS+=("$part")
            word=${word#"$part"}
            COMP_WORDS+=("${word:0:1}")
            word=${word:1}
            # At the end of a line bash has an empty word behind the sign.
            [[ -n $word ]] || break 2
        done
        COMP_WORDS+=("$word")
    done
    [[ -n $word ]] || [[ ${COMP_WORDS[-1]} != [:=] ]] || COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _zxpolicy
    printf '%s\n' "${COMPREPLY[@]}" | sort | paste -sd' '
}

# expect WANTED WORD...
expect() {
    local wanted=$1 got
    shift
    got=$(offered "$@")
    [[ $got == "$wanted" ]] || complain "for \"$*\" it offers \"$got\", not \"$wanted\""
}

# block NAME COMMAND...: the first words of the lines of a block of --help, sorted, on one line.
block() {
    local name=$1
    shift
    "$program" "$@" --help | sed -n "/^$name:/,/^$/s/^  \(-h,\)\{0,1\}\([a-z-][a-z-]*\).*/\2/p" | sort | paste -sd' '
}

# options COMMAND...: those of --help, with --store, which every command takes.
options() {
    { block Options "$@" | tr ' ' '\n' && echo --store; } | sort -u | paste -sd' '
}

commands=$(block Subcommands)
[[ $(wc -w <<<"$commands") -ge 5 ]] || complain "--help names too few commands: $commands"
expect "$commands" "$program" ""
expect "$(options)" "$program" -
for command in $commands; do
    expect "$(options "$command")" "$program" "$command" -
    below=$(block Subcommands "$command")
    [[ -z $below ]] || expect "$below" "$program" "$command" ""
    for second in $below; do
        expect "$(options "$command" "$second")" "$program" "$command" "$second" -
    done
done

expect "apply" "$program" a
expect "--dry-run" "$program" apply --d
expect "json text" "$program" refs list L --format ""
expect "directory plain" "$program" list import L f --format ""
expect "total" "$program" match --best --priority t
expect "domain name" "$program" list check --weight ""
expect "ascending descending user" "$program" list show L --order ""

printf 'zxpolicy: 1\nlists: [{name: Staff}, {name: "Our friends"}, {name: Stores}]\nroot: {conditions: [{sender: "*", receiver: "*"}]}\n' >a.yaml
"$program" --store sqlite:own.db apply a.yaml >/dev/null
expect "a.yaml" "$program" apply a
expect "" "$program" apply a.yaml ""
expect "a.yaml" "$program" match --envelopes a.
expect "a.yaml" "$program" test a
expect "" "$program" test --policy a.yaml a.yaml ""
expect "a.yaml" "$program" replay --against a.
expect "own.db" "$program" replay --against sqlite:own
expect "" "$program" replay --samples ""
expect "a.yaml" "$program" list import Staff a
expect "sqlite:" "$program" --store sq
expect "own.db" "$program" --store sqlite:own
expect "own.db" "$program" --store=sqlite:ow
expect "Our\\ friends Staff Stores" "$program" --store sqlite:own.db refs list ""
expect "Staff Stores" "$program" --store=sqlite:own.db list show St
expect "" "$program" list show ""
[[ ! -e policy.db ]] || complain "it made a store"
ZXPOLICY_STORE=sqlite:own.db expect "Staff" "$program" list add Sta
ZXPOLICY_STORE=sqlite:own.db expect "" "$program" list add Staff ""
ZXPOLICY_STORE=sqlite:own.db expect "Stores" "$program" list show -- Sto
exit $wrong
