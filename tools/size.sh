#!/usr/bin/env bash
# What the stripped library takes on the television, held below the reviewed budget, tests/package/budget.txt.
#
#     tools/size.sh [--record REASON] LIBRARY
#
# --record writes the budget anew: what the library takes, and a hundredth more; and the reason with it.
set -euo pipefail
cd "$(dirname "$0")/.."
budget=tests/package/budget.txt
tools=arm-linux-gnueabihf

record='' reason=''
if [ "${1:-}" = --record ]; then
    record=yes reason=$(tr -s '[:space:]' ' ' <<<"${2:-}" | sed 's/^ //; s/ $//')
    [ -n "$reason" ] || { echo "size: say why it changes: make size RECORD=1 REASON='what changed'" >&2; exit 2; }
    shift 2
fi
[ $# = 1 ] || { echo "usage: tools/size.sh [--record REASON] LIBRARY" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
$tools-strip -o "$work/library" "$1"

# section NAME: its bytes
section() { $tools-size -A "$work/library" | awk -v name="$1" '$1 == name { bytes = $2 } END { print bytes + 0 }'; }

{
    echo "$(stat -c %s "$work/library") bytes: the stripped library"
    echo "$(section .text) bytes: code (.text)"
    echo "$(section .rodata) bytes: read-only data (.rodata)"
    echo "$(section .data.rel.ro) bytes: read-only once relocated (.data.rel.ro)"
    echo "$(($(section .data) + $(section .bss))) bytes: data of each process (.data, .bss)"
    echo "$($tools-readelf -rW "$work/library" | grep -c ' R_ARM_') relocations"
} >"$work/now"

if [ -n "$record" ]; then
    {
        echo "# What the stripped 32-bit ARM library may take. \`make size\` looks; make size RECORD=1 REASON='what changed'"
        echo "# writes it anew. The reasons so far:"
        echo "#"
        [ ! -e "$budget" ] || grep -E '^# [0-9]{4}-' "$budget" || true
        echo "# $(date +%F): $reason"
        echo
        awk '{ $1 = int($1 * 1.01 + 0.999); print }' "$work/now"
    } >"$work/budget"
    cp "$work/budget" "$budget"
fi

# Both lists have the same rows, or the budget is not of this script.
grep -E '^[0-9]' "$budget" >"$work/allowed"
diff <(cut -d' ' -f2- "$work/allowed") <(cut -d' ' -f2- "$work/now") || { echo "size: $budget has other rows" >&2; exit 1; }
paste -d' ' <(cut -d' ' -f1 "$work/allowed") "$work/now" | awk '
    { over = $2 > $1; failed += over; allowed = $1; $1 = ""
      printf "%s, of %d%s\n", substr($0, 2), allowed, over ? "  <<< over budget" : "" }
    END { exit failed > 0 }' || {
    echo "size: over budget. Where that is meant, with its reason: make size RECORD=1 REASON='what changed'" >&2
    exit 1
}
