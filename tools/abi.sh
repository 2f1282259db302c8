#!/usr/bin/env bash
# Holds the library's binary interface, of each processor, against the reviewed one in tests/package/abi: what players and
# plug-ins see of it by the public headers. Any change fails, be it one that they would not notice.
#
#     tools/abi.sh [--record REASON] PROCESSOR=LIBRARY...
#
# LIBRARY has debug information. --record writes the interfaces anew, and the reason into tests/package/abi/reasons.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
baselines=tests/package/abi

record='' reason=''
if [ "${1:-}" = --record ]; then
    record=yes reason=$(tr -s '[:space:]' ' ' <<<"${2:-}" | sed 's/^ //; s/ $//')
    [ -n "$reason" ] || { echo "abi: say why it changes: make abi RECORD=1 REASON='what changed'" >&2; exit 2; }
    shift 2
fi
[ $# -gt 0 ] || { echo "usage: tools/abi.sh [--record REASON] PROCESSOR=LIBRARY..." >&2; exit 2; }

# describe LIBRARY FILE: the interface, without what changes when nothing of it does: lines, paths, names of parameters.
describe() {
    abidw --headers-dir "$headers" --drop-private-types --drop-undefined-syms --exported-interfaces-only --no-elf-needed \
        --no-show-locs --no-parameter-names --no-corpus-path --no-comp-dir-path --out-file "$2" "$1"
    sed -i "s,^\( *<abi-instr .* path='\)[./]*,\1," "$2"  # with a compiler cache they are told in another way
    grep -q "<class-decl name='SubtitleParser' size-in-bits=" "$2" || {
        echo "abi: $1 does not tell its classes: it has no debug information, or the public headers are not its own" >&2
        exit 2
    }
}

# sees FILE: of three changes written into the interface each is told. A description without its classes is like any other.
sees() {
    local change
    for change in \
        "s/vtable-offset='9'/vtable-offset='99'/" \
        "/layout-offset-in-bits=/{N;/'m_u32FrameRrate'/s/in-bits='[0-9]*'/in-bits='9600'/;P;D}" \
        "s/\('ST_MEDIA_SUBTITLE_PARSER_TAG' size-in-bits='\)[0-9]*/\1960/"; do
        sed "$change" "$1" >"$headers/changed.abi"
        ! abidiff --harmless "$headers/changed.abi" "$1" >/dev/null || {
            echo "abi: the comparison does not see a change that was made in $1: $change" >&2
            exit 2
        }
    done
}

# The public headers in a folder of their own: abidw looks into folders within the one it is given, too.
headers=$(mktemp -d)
trap 'rm -rf "$headers"' EXIT
cp subtitle/*.h "$headers"

changed=0
for pair in "$@"; do
    processor=${pair%%=*} library=${pair#*=}
    found=$(dirname "$library")/$processor.abi
    describe "$library" "$found"
    sees "$found"
    echo "== $processor: $(grep -c '<elf-symbol ' "$found") symbols, $(grep -c '<class-decl ' "$found") classes and records"
    if [ ! -e "$baselines/$processor.abi" ]; then
        echo "not reviewed so far"
        changed=$((changed + 1))
    elif abidiff --harmless "$baselines/$processor.abi" "$found" >/dev/null; then
        echo "as reviewed"
    else  # told by what changed, not by everything that reaches it
        abidiff --harmless --leaf-changes-only "$baselines/$processor.abi" "$found" || true
        changed=$((changed + 1))
    fi
    [ -z "$record" ] || cp "$found" "$baselines/$processor.abi"
done

if [ -n "$record" ]; then
    echo "$(date +%F): $reason" >>"$baselines/reasons.txt"
    echo "abi: recorded; 'git diff $baselines' is for the review"
elif [ "$changed" -gt 0 ]; then
    echo "abi: $changed binary interfaces are not the reviewed ones. Where that is meant, with its reason:" \
        "make abi RECORD=1 REASON='what changed'" >&2
    exit 1
fi
