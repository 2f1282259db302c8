#!/usr/bin/env bash
# Builds the library as shipped in this tree and in a copy of it, in a folder of another name and length: the stripped
# libraries are the same to the byte. tools/reproducible.sh PRESET...
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || { echo "usage: tools/reproducible.sh PRESET..." >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CCACHE_DISABLE=1  # it would hand out one folder's objects in the other

# build FOLDER PRESET LIBRARY
build() {
    local strip=strip
    [[ $2 != *arm* ]] || strip=arm-linux-gnueabihf-strip
    (
        cd "$1"
        cmake --preset "$2" --log-level=WARNING && cmake --build --preset "$2" --target vxsubtitle
    ) >"$work/log" || { tail -n 40 "$work/log"; echo "reproducible: the build of $2 in $1 failed" >&2; exit 1; }
    $strip -o "$3" "$1/build/$2/libvxsubtitle.so"
}

copy=$work/another/folder/of/a/longer/name
mkdir -p "$copy" "$work/here" "$work/there"
tar -c --exclude=./build --exclude=./.git --exclude=node_modules . | tar -x -C "$copy"

differing=0
for preset in "$@"; do
    build . "$preset" "$work/here/$preset.so"
    build "$copy" "$preset" "$work/there/$preset.so"
    (cd "$work" && sha256sum "here/$preset.so" "there/$preset.so")
    if cmp "$work/here/$preset.so" "$work/there/$preset.so"; then
        echo "reproducible: $preset, the same $(stat -c %s "$work/here/$preset.so") bytes from both folders"
    else
        echo "reproducible: $preset, the two libraries differ" >&2
        differing=$((differing + 1))
    fi
done
[ "$differing" -eq 0 ]
