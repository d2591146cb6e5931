#!/usr/bin/env bash
# What the built library looks like from outside: its symbols, its name, its segments.
# usage: check_library.sh exports|identity|hardening|seam LIBRARY LIST
set -uo pipefail
export LC_ALL=C
check=$1 library=$2 list=$3
faults=0

fault() {
    echo "FAULT: $*" >&2
    faults=$((faults + 1))
}

# The exported symbols, one a line, readable, without what differs between word sizes. Constants that headers define are
# in the library only where a build happens to need a place for them.
exported() {
    nm -DC --defined-only "$library" | sed -E 's/^[0-9a-f]+ +//; /^[uV] (vtable|typeinfo|VTT)/!{/^[uV] /d}' |
        sed -E 's/^[A-Za-z] +//; s/@@?ZXPOLICY_1$//; s/unsigned long/unsigned int/g' | grep -v '^ZXPOLICY_1$' | sort -u
}

case $check in
    exports)
        reviewed=$(grep -v '^#' "$list")
        if ! difference=$(diff <(printf '%s\n' "$reviewed") <(exported)); then
            echo "$difference"
            fault "the exported symbols are not the reviewed ones (< reviewed, > built)."
            echo "When the change is wanted: check_library.sh accept LIBRARY LIST writes the list anew; review it." >&2
        fi
        ;;
    accept)
        {
            echo "# The symbols that libzxpolicy exports, in every word size. Reviewed: a change here changes the interface."
            exported
        } >"$list.new" && mv "$list.new" "$list"
        ;;
    identity)
        readelf -d "$library" | grep -q 'SONAME.*\[libzxpolicy\.so\.1\]' || fault "the soname is not libzxpolicy.so.1"
        [[ $(readlink -f "$library") == *libzxpolicy.so.1.2.0 ]] || fault "the file's version is not 1.2.0"
        grep -aqF 'Korvexia&Libraray-1.2.0.1229.%getversion' "$library" || fault "the version marker is missing"
        ;;
    hardening)
        readelf -lW "$library" | grep -E '^ +(LOAD|GNU_STACK)' | grep -q 'RWE' && fault "a segment is writable and executable"
        readelf -lW "$library" | grep -q 'GNU_RELRO' || fault "relocations stay writable (no RELRO)"
        readelf -dW "$library" | grep -qE 'BIND_NOW|FLAGS_1.*NOW' || fault "symbols are bound late (no BIND_NOW)"
        readelf -dW "$library" | grep -q 'TEXTREL' && fault "code is relocated when it is loaded (TEXTREL)"
        ;;
    seam)
        for name in zxreg_{open,create,close,delete}Key zxreg_{query,set,delete,enum}Value zxreg_enumSubkey; do
            nm -D --undefined-only "$library" | grep -qE " U $name(@|\$)" || fault "$name is not taken from the host"
        done
        for name in zxreg_beginUpdate zxreg_endUpdate; do
            nm -D "$library" | grep -qE " w $name(@|\$)" || fault "$name is not an optional service of the host"
        done
        nm -DC "$library" | grep -qE ' [TtWVDBR] (zxreg_|kr_|grGetLog|KR::|ZxIntLog)' && fault "a service of the host is built in"
        readelf -dW "$library" | grep -q 'SYMBOLIC' && fault "the library is bound to itself (SYMBOLIC)"
        ;;
    *)
        fault "unknown check $check"
        ;;
esac
((faults == 0))
