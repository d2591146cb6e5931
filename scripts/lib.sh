# What the top-level commands share. To be sourced; changes to the top folder.
# shellcheck shell=bash

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit
# What is made here may be written to by nobody else: stores and keys that others may change are refused.
umask 022
mkdir -p build

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# Milliseconds since the epoch, and a number of them as seconds with one decimal.
now() { echo $((${EPOCHREALTIME/./} / 1000)); }
seconds() { printf '%d.%d' $(($1 / 1000)) $(($1 % 1000 / 100)); }

# Makes sure that programs of the preset's word size can be built and run here.
check_word_size() {
    [[ $1 == i686* && ! -e build/$1/build.ninja ]] || return 0
    local probe
    probe=$(mktemp -d)
    echo 'int main() { return 0; }' >"$probe/probe.cc"
    if ! c++ -m32 -o "$probe/probe" "$probe/probe.cc" >"$probe/log" 2>&1; then
        tail -n 3 "$probe/log" >&2
        rm -rf "$probe"
        echo "32-bit programs cannot be built here: c++ -m32 fails (package g++-multilib)" >&2
        return 1
    fi
    if ! "$probe/probe"; then
        rm -rf "$probe"
        echo "32-bit programs cannot be run here: the kernel refuses them" >&2
        return 1
    fi
    rm -rf "$probe"
}

# build PRESET [TARGET...]: configures build/PRESET where needed, and builds what changed.
build() {
    local preset=$1
    shift
    check_word_size "$preset" || return
    if [[ ! build/$preset/build.ninja -nt CMakePresets.json ]]; then
        cmake --preset "$preset" || return
    fi
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

# Whether a package is installed.
installed() { dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null | grep -qx installed; }

# The programs with several threads and processes, which preset native-threads is for.
race_targets=(threads_tests contract_registry contract_store_worker)
