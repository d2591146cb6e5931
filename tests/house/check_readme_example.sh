#!/usr/bin/env bash
# Runs the README's program, given as $1, on its default store: a fresh one, whose root rule takes every mail.
set -euo pipefail
expected='rule \ takes bob@example.com'
actual=$("$1")
[[ $actual == "$expected" ]] || {
    printf 'expected: %s\nactual:   %s\n' "$expected" "$actual"
    exit 1
}
