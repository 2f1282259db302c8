#!/usr/bin/env bash
# The three places that name the library's sources say the same: the folder, cmake/Sources.cmake and Android.bp.
#
# usage: sources_test.sh SOURCE_DIR
set -euo pipefail
cd "$1"

on_disk() { find subtitle -name '*.cpp' | LC_ALL=C sort; }
in_cmake() {
    {
        sed -n 's/^ *\(subtitle\/[^ ]*\.cpp\)$/\1/p' cmake/Sources.cmake
        sed -n 's/^VX_SUB_DIALECT(\([A-Za-z0-9]*\),.*/subtitle\/SubtitleParser\1.cpp/p' subtitle/parser/SubDialects.def
    } | LC_ALL=C sort
}
in_android() { sed -n 's/^ *"\(subtitle\/[^"]*\.cpp\)",$/\1/p' Android.bp | LC_ALL=C sort; }

[ "$(in_cmake | wc -l)" -gt 0 ] || { echo "FAILED: no source found in cmake/Sources.cmake" >&2; exit 1; }
diff -u --label "subtitle/" --label "cmake/Sources.cmake" <(on_disk) <(in_cmake) || { echo "FAILED" >&2; exit 1; }
diff -u --label "cmake/Sources.cmake" --label "Android.bp" <(in_cmake) <(in_android) || { echo "FAILED" >&2; exit 1; }
echo "sources: $(in_cmake | wc -l) files, the same in cmake/Sources.cmake and Android.bp"
