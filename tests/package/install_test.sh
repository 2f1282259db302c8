#!/usr/bin/env bash
# `make install` as docs/integrating.md has it, into a folder of its own that is then moved: everything that the document
# names is there, and vxsub runs.
#
# usage: install_test.sh SOURCE_DIR WORK_DIR
set -euo pipefail
source=$(realpath "$1")
mkdir -p "$2"
work=$(realpath "$2")
rm -rf "${work:?}"/*

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

cmake -DDOCUMENT="$source/docs/integrating.md" -DFOLDER="$work/samples" -P "$source/tests/integrating/Samples.cmake" \
    >"$work/samples.log"
(cd "$source" && PREFIX=$work/installed sh -e "$work/samples/install.sh") || fail "make install"
[ -d "$work/installed" ] || fail "nothing was installed into $work/installed"
for built in lib/libvxsubtitle.so bin/vxsub; do
    "$source/tests/package/hardening_test.sh" "$work/installed/$built" "$source" "$work" || fail "the hardening of $built"
done
mv "$work/installed" "$work/moved"
cd "$work/moved"
for path in lib/libvxsubtitle.so lib/libvxsubtitle_platform.so include/vxsubtitle/subtitle/SubtitleParser.h \
    lib/cmake/vxsubtitle/vxsubtitleConfig.cmake lib/pkgconfig/vxsubtitle.pc lib/pkgconfig/vxsubtitle_platform.pc \
    bin/vxsub share/man/man1/vxsub.1; do
    [ -e "$path" ] || fail "$path is not installed"
done
bin/vxsub at "$source/examples/demo.srt" 12.5s | grep -q 'Then wake him\.' || fail "what vxsub says"
PKG_CONFIG_PATH=$work/moved/lib/pkgconfig pkg-config --validate vxsubtitle vxsubtitle_platform || fail "pkg-config"
echo "make install: all is there, and vxsub runs from where it was moved to"
