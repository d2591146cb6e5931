#!/usr/bin/env bash
# Installs what was built, and looks at it as its users do.
# usage: check_install.sh tree|headers|pkgconfig|cmake|packages, with the variables that CMakeLists.txt sets.
set -uo pipefail
export LC_ALL=C PATH=$PATH:/usr/sbin:/sbin
here=$(dirname "$(realpath "$0")")
work=$ZX_BUILD/tests/install/work
prefix=$work/prefix
docs=share/doc/zxpolicy
read -ra flags <<<"$ZX_FLAGS"
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
faults=0

fault() {
    echo "FAULT: $*" >&2
    faults=$((faults + 1))
}

# run COMMAND...: what it prints is shown when it fails, which ends the check.
run() {
    local output
    output=$("$@" 2>&1) || {
        printf '%s\nFAULT: %s\n' "$output" "$*" >&2
        exit 1
    }
}

# compare TEXT EXPECTED-FILE: the text is the file's.
compare() {
    diff "$2" - <<<"$1" || fault "< expected, > found: $2"
}

# files FOLDER: what lies in it, one name a line, but for the generated reference.
files() {
    (cd "$1" && find . -not -type d -printf '%P\n') | grep -vE "^(share/man/man3|$docs/html)/" |
        sed "s|^$ZX_LIBDIR/|LIBDIR/|" | sort
}

# no_trace FOLDER PATH...: no file in the folder names something below one of the paths.
no_trace() {
    local folder=$1 text hits
    shift
    for text in "$@"; do
        hits=$(grep -rlaF -- "$text/" "$folder") && fault "$text is named in: $hits"
    done
}

# check_links: each library under its full name, its soname and the name that the linker looks for; nothing is loaded
# from a fixed place.
check_links() {
    local name version path
    while read -r name version; do
        path=$prefix/$ZX_LIBDIR/lib$name.so
        [[ $(readlink "$path") == "lib$name.so.1" ]] || fault "$path does not lead to lib$name.so.1"
        [[ $(readlink "$path.1") == "lib$name.so.$version" ]] || fault "$path.1 does not lead to $version"
        readelf -d "$path" | grep -qF "soname: [lib$name.so.1]" || fault "the soname of $path is not lib$name.so.1"
    done <<<$'zxpolicy 1.2.0\nzxregistry 1.0.0\nzxbase 1.0.0'
    for path in "$prefix/$ZX_LIBDIR"/*.so "$prefix"/bin/*; do
        readelf -d "$path" | grep -E 'R(UN)?PATH' | grep -v '\[\$ORIGIN[]/]' && fault "$path has a fixed search path"
    done
}

check_tree() {
    rm -rf "$work"
    run "$CMAKE" --install "$ZX_BUILD" --prefix "$prefix"
    compare "$(files "$prefix")" "$here/files.txt"
    check_links
    [[ ! -e $ZX_BUILD/docs/html.made || -s $prefix/$docs/html/index.html ]] || fault "the reference is not installed"
    [[ ! -e $ZX_BUILD/docs/man3.made || -s $prefix/share/man/man3/zxpolicy.3 ]] || fault "the manual is not installed"
    no_trace "$prefix" "$ZX_SOURCE" "$ZX_BUILD" "$prefix"

    # The three components are all of it, also where a packager collects them in a folder of their own.
    for component in runtime development tool; do
        run env DESTDIR="$work/stage" "$CMAKE" --install "$ZX_BUILD" --prefix /opt/zx --component $component
    done
    compare "$(files "$work/stage/opt/zx")" "$here/files.txt"
    no_trace "$work/stage" "$work/stage"
    rm -rf "$work/stage"
}

# check_headers: all headers compile together in every language that they are for, and each by itself.
check_headers() {
    cd "$prefix/include" || exit
    local headers c_headers=(zxpolicy.h zxpolicy_explain.h zxregistry.h zxbase.h) compile source
    mapfile -t headers < <(find . -name '*.h' -printf '%P\n' | sort)
    printf '#include "%s"\n' "${c_headers[@]}" |
        run "$CC" "${flags[@]}" -I. "${warnings[@]}" -std=c11 -fsyntax-only -x c - || exit
    compile=("$CXX" "${flags[@]}" -I. "${warnings[@]}" -fsyntax-only -x c++)
    for standard in c++17 c++20; do
        printf '#include "%s"\n' "${headers[@]}" | run "${compile[@]}" -std=$standard - || exit
    done
    # By itself, in one word size: what the library's own source includes first has been compiled so already.
    ((ZX_BITS == 64)) || return
    for header in "${headers[@]}"; do
        source=$ZX_SOURCE/src/${header#zxpolicy/}
        grep -sm1 '^#include' "${source%.h}.cc" | grep -qF "\"${header#zxpolicy/}\"" && continue
        "${compile[@]}" -std=c++17 - <<<"#include \"$header\"" || fault "$header needs another before it"
    done
}

# run_examples FOLDER PREFIX: the programs in the folder give the answers that they should.
run_examples() {
    local store=sqlite:$1/policy.db mail=(ann@hotmail.com bisu@netnoteinc.com pi@netnoteinc.com bob@elsewhere.example)
    run "$2/bin/zxpolicy" --store "$store" apply "$2/$docs/examples/policy.yaml"
    compare "$("$1/decide" "$store" "${mail[@]}" 2>&1)" "$here/expected/decide.txt"
    compare "$("$1/edit_policy" 2>&1)" "$here/expected/edit_policy.txt"
    compare "$("$1/edit_policy" "sqlite:$1/edit.db" 2>&1)" "$here/expected/edit_policy.txt"
    compare "$("$1/edit_policy" "sqlite:$1/edit.db" 2>&1)" "$here/expected/edit_policy.txt"
    compare "$("$1/own_store" 2>&1)" "$here/expected/own_store.txt"
}

# build_examples FOLDER PREFIX NAME...: with what pkg-config says.
build_examples() {
    local folder=$1 prefix=$2 source options compiler
    export PKG_CONFIG_PATH=$prefix/$ZX_LIBDIR/pkgconfig
    shift 2
    read -ra options <<<"$(pkg-config --cflags --libs zxpolicy) -Wl,-rpath,$(pkg-config --variable=libdir zxpolicy)"
    for source in "$@"; do
        compiler=("$CC" -std=c11)
        [[ $source == *.c ]] || compiler=("$CXX" -std=c++17)
        run "${compiler[@]}" "${flags[@]}" "${warnings[@]}" "$prefix/$docs/examples/$source" -o "$folder/${source%.*}" \
            "${options[@]}"
    done
}

# outside: a folder outside of this tree, gone afterwards.
outside() {
    elsewhere=$(mktemp -d)
    trap 'rm -rf "$elsewhere"' EXIT
}

check_pkgconfig() {
    outside
    cp -a "$prefix" "$elsewhere/one"
    mkdir "$elsewhere/first" "$elsewhere/second"
    build_examples "$elsewhere/first" "$elsewhere/one" decide.c edit_policy.cc own_store.c
    run_examples "$elsewhere/first" "$elsewhere/one"
    [[ $(pkg-config --modversion zxpolicy) == 1.2.0 ]] || fault "pkg-config has another version"

    # The whole prefix goes to another place.
    mv "$elsewhere/one" "$elsewhere/other"
    build_examples "$elsewhere/second" "$elsewhere/other" decide.c own_store.c
    mv "$elsewhere"/first/policy.db* "$elsewhere/second"
    compare "$("$elsewhere/second/own_store" 2>&1)" "$here/expected/own_store.txt"
    run "$elsewhere/second/decide" "sqlite:$elsewhere/second/policy.db" "" bob@example.com
    "$elsewhere/second/decide" memory: "" bob@example.com 2>/dev/null && fault "a mail passes without a policy"
    run "$elsewhere/other/bin/zxpolicy" --store "sqlite:$elsewhere/second/policy.db" dump
}

check_cmake() {
    outside
    cp -a "$here/consumer" "$elsewhere/project"
    run "$CMAKE" -G Ninja -S "$elsewhere/project" -B "$elsewhere/build" -DCMAKE_PREFIX_PATH="$prefix" \
        -DEXAMPLES="$prefix/$docs/examples" -DCMAKE_C_FLAGS="$ZX_FLAGS" -DCMAKE_CXX_FLAGS="$ZX_FLAGS" \
        -DCMAKE_C_COMPILER="$CC" -DCMAKE_CXX_COMPILER="$CXX"
    run "$CMAKE" --build "$elsewhere/build"
    run_examples "$elsewhere/build" "$prefix"
    run "$CMAKE" -DPACKAGE="$prefix/$ZX_LIBDIR/cmake/zxpolicy" -DBITS="$ZX_BITS" -P "$elsewhere/project/refused.cmake"
}

# as_dpkg ARGUMENT...: dpkg at work on a scratch root whose status file says what the system has, so that dependencies
# are checked. That the files of those packages are not in the scratch root is no news.
as_dpkg() {
    local root=$elsewhere/root as=()
    ((EUID == 0)) || as=(unshare --map-root-user)
    "${as[@]}" dpkg --root="$root" --force-script-chrootless --log=/dev/null "$@" 2> >(
        grep -v 'files list file for package .* missing' >&2)
}

check_packages() {
    outside
    local architecture=amd64 names=(libzxpolicy-dev libzxpolicy1 zxpolicy) root=$elsewhere/root lint
    ((ZX_BITS == 64)) || architecture=i386 names=(libzxpolicy1 zxpolicy)
    cd "$ZX_BUILD" || exit
    run "$CPACK" -B "$elsewhere/packages"
    compare "$(cd "$elsewhere/packages" && ls ./*.deb)" <(printf "./%s_1.2.0-1_$architecture.deb\n" "${names[@]}")
    lint=$(lintian --fail-on error "$elsewhere"/packages/*.deb 2>&1) || fault "lintian found errors"
    grep -v '^running with root privileges' <<<"$lint"

    mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers}
    cp /var/lib/dpkg/status "$root/var/lib/dpkg/status"
    [[ ! -e /var/lib/dpkg/arch ]] || cp /var/lib/dpkg/arch "$root/var/lib/dpkg/arch"
    run as_dpkg --install "$elsewhere"/packages/*.deb
    no_trace "$root/usr" "$ZX_SOURCE" "$ZX_BUILD" "$elsewhere"
    export LD_LIBRARY_PATH=$root/usr/$ZX_LIBDIR
    ldd "$root/usr/bin/zxpolicy" | grep zx | grep -vF "$root/usr/" && fault "another library than the package's is loaded"
    run "$root/usr/bin/zxpolicy" --store "sqlite:$elsewhere/policy.db" apply "$ZX_SOURCE/examples/policy.yaml"
    run "$root/usr/bin/zxpolicy" --store "sqlite:$elsewhere/policy.db" dump
    run as_dpkg --purge "${names[@]/%/:$architecture}"
    [[ -z $(find "$root" -path "$root/var/lib/dpkg" -prune -o -not -type d -print) ]] || fault "files were left behind"
    [[ ! -e $root/usr ]] || fault "folders were left behind"
}

case $1 in
    tree) check_tree ;;
    headers) check_headers ;;
    pkgconfig) check_pkgconfig ;;
    cmake) check_cmake ;;
    packages) check_packages ;;
    *) fault "unknown check $1" ;;
esac
((faults == 0))
