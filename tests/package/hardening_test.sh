#!/usr/bin/env bash
# A library (or program) as shipped has what the platform's build gives every library, and names no folder of the machine
# that built it.
#
# usage: hardening_test.sh LIBRARY FOLDER...
set -euo pipefail
export LC_ALL=C
library=$1
shift

problems=0
# expect WHAT COMMAND...: COMMAND succeeds
expect() {
    local what=$1
    shift
    "$@" && return
    echo "$library: $what"
    problems=$((problems + 1))
}

segments=$(readelf -lW "$library") dynamic=$(readelf -dW "$library") symbols=$(nm -D "$library")
has() { grep -qE "$2" <<<"$1"; }
has_not() { ! has "$@"; }

expect "no RELRO: tables of addresses stay writable" has "$segments" '^ *GNU_RELRO '
expect "not bound at once (-z now)" has "$dynamic" '\((FLAGS|BIND_NOW|FLAGS_1)\).*\b(BIND_NOW|NOW)\b'
expect "its stack is executable, or it does not say" has "$segments" '^ *GNU_STACK .* RW +0x'
expect "a segment is both writable and executable" has_not "$segments" '^ *LOAD .* RWE '
expect "code is relocated (TEXTREL)" has_not "$dynamic" 'TEXTREL'
expect "no stack protector" has "$symbols" ' U __stack_chk_fail'
expect "not fortified" has "$symbols" ' U __(memcpy|printf|read|snprintf|vsnprintf|memset)_chk'

for folder in "$@"; do
    expect "names the folder $folder" has_not "$(strings -a "$library")" "$(sed 's/[][\.*^$+?(){}|/]/\\&/g' <<<"$folder")"
done
[ "$problems" -eq 0 ] || exit 1
echo "hardening: RELRO, now, no executable stack, stack protector, fortified; names none of: $*"
