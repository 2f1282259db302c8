#!/usr/bin/env bash
# Builds the library as shipped in this tree and in a copy of it, in a folder of another name and length: the stripped
# libraries are the same to the byte. tools/reproducible.sh [PRESET]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
strip=strip
[[ $preset != *arm* ]] || strip=arm-linux-gnueabihf-strip
export CCACHE_DISABLE=1  # it would hand out one folder's objects in the other

# build FOLDER LIBRARY
build() {
    (
        cd "$1"
        cmake --preset "$preset" --log-level=WARNING && cmake --build --preset "$preset" --target vxsubtitle
    ) >"$work/log" || { tail -n 40 "$work/log"; echo "reproducible: the build in $1 failed" >&2; exit 1; }
    $strip -o "$2" "$1/build/$preset/libvxsubtitle.so"
}

copy=$work/another/folder/of/a/longer/name
mkdir -p "$copy"
tar -c --exclude=./build --exclude=./.git --exclude=node_modules . | tar -x -C "$copy"
build . "$work/here.so"
build "$copy" "$work/there.so"

sha256sum "$work/here.so" "$work/there.so" | sed "s,$work/,,"
cmp "$work/here.so" "$work/there.so" || {
    echo "reproducible: the two libraries differ" >&2
    exit 1
}
echo "reproducible: the same $(stat -c %s "$work/here.so") bytes from both folders"
