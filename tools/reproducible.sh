#!/usr/bin/env bash
# Builds the library as shipped from two copies of this tree, in folders of different names and lengths: the stripped
# libraries are the same to the byte. tools/reproducible.sh [PRESET]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
strip=strip
[[ $preset != *arm* ]] || strip=arm-linux-gnueabihf-strip
export CCACHE_DISABLE=1  # it would hand out one folder's objects in the other

for copy in a another/folder/of/a/longer/name; do
    mkdir -p "$work/$copy"
    tar -c --exclude=./build --exclude=./.git . | tar -x -C "$work/$copy"
    (
        cd "$work/$copy"
        cmake --preset "$preset" --log-level=WARNING && cmake --build --preset "$preset" --target vxsubtitle
    ) >"$work/log" || { tail -n 40 "$work/log"; echo "reproducible: the build in $copy failed" >&2; exit 1; }
    $strip -o "$work/$copy.so" "$work/$copy/build/$preset/libvxsubtitle.so"
done

sha256sum "$work/a.so" "$work/another/folder/of/a/longer/name.so" | sed "s,$work/,,"
cmp "$work/a.so" "$work/another/folder/of/a/longer/name.so" || {
    echo "reproducible: the two libraries differ" >&2
    exit 1
}
echo "reproducible: the same $(stat -c %s "$work/a.so") bytes from both folders"
