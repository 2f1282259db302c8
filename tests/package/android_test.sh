#!/usr/bin/env bash
# Android.bp has bpfmt's form and says what CMake's files say: the libraries that are linked and those whose headers the
# public headers need, the language, the exported symbols. Which sources: sources_test.sh.
#
# usage: android_test.sh SOURCE_DIR
set -euo pipefail
export LC_ALL=C
cd "$1"
. tests/package/blueprint.sh

problems=0
# same WHAT EXPECTED FOUND: two lists, in any order
same() {
    local difference
    difference=$(diff <(sort -u <<<"$2" | grep .) <(sort -u <<<"$3" | grep .)) && return
    printf 'Android.bp: %s (< as needed, > as it says)\n%s\n' "$1" "$difference"
    problems=$((problems + 1))
}
of() { blueprint_of Android.bp "$@"; }

# The platform's libraries by the headers that FILE... include: hardware/gralloc.h comes with libui.
libraries_of() {
    grep -hoE '^#include <[^>]*>' "$@" | sed -nE '
        s,.*<android/log\.h>,liblog,p
        s,.*<cutils/.*,libcutils,p
        s,.*<dlfcn\.h>,libdl,p
        s,.*<gui/.*,libgui,p
        s,.*<(ui|hardware)/.*,libui,p
        s,.*<system/window\.h>,libnativewindow,p
        s,.*<utils/.*,libutils,p'
}

# The same by CMake's names: the stand-ins take the place of all that Debian does not package.
libraries_in_cmake() {
    sed -n '/^target_link_libraries(vxsubtitle_objects/,/)$/p' CMakeLists.txt | tr ' )' '\n\n' | sed -n '
        s/^android::/lib/p
        s/^.{CMAKE_DL_LIBS}$/libdl/p
        s/^vxsubtitle_platform$/libcutils\nlibgui\nlibui\nlibnativewindow/p'
}

sources=$(of libvxsubtitle srcs)
# shellcheck disable=SC2046  # names without blanks
same "shared_libs and the headers that are included" \
    "$(libraries_of $(find subtitle -name '*.cpp' -o -name '*.h'))" "$(of libvxsubtitle shared_libs)"
same "shared_libs and CMakeLists.txt" "$(libraries_in_cmake)" "$(of libvxsubtitle shared_libs)"
same "export_shared_lib_headers and the public headers" "$(libraries_of subtitle/*.h)" \
    "$(of libvxsubtitle export_shared_lib_headers)"
same "export_include_dirs: headers are included as subtitle/..." "." "$(of libvxsubtitle export_include_dirs)"
same "version_script and CMakeLists.txt" \
    "$(sed -nE 's/.*--version-script,\$\{PROJECT_SOURCE_DIR\}\/([^)]*).*/\1/p' CMakeLists.txt)" \
    "$(of libvxsubtitle version_script)"
same "cpp_std and cmake/Compiler.cmake" \
    "$(awk '/CMAKE_CXX_STANDARD [0-9]/ { gsub(/[^0-9]/, ""); std = $0 } /CMAKE_CXX_EXTENSIONS ON/ { gnu = 1 }
            END { print (gnu ? "gnu++" : "c++") std }' cmake/Compiler.cmake)" "$(of libvxsubtitle cpp_std)"
same "rtti and cmake/Compiler.cmake" "$(grep -q -- '-fno-rtti' cmake/Compiler.cmake && echo false)" "$(of libvxsubtitle rtti)"
for flag in -fexceptions -fvisibility=hidden -fvisibility-inlines-hidden; do
    of libvxsubtitle cppflags | grep -qxe "$flag" || { echo "Android.bp: no $flag"; problems=$((problems + 1)); }
done

# The host tests: every file is there, and is CMake's as well.
same "sources of the stand-ins, and platform/host/CMakeLists.txt" \
    "$(sed -nE 's,^ +(src/[^ ]*\.cpp)$,platform/host/\1,p' platform/host/CMakeLists.txt)" \
    "$(of libvxsubtitle_test srcs | grep '^platform/')"
for file in $(of libvxsubtitle_test srcs); do
    [ -e "$file" ] || { echo "Android.bp: there is no $file"; problems=$((problems + 1)); }
done
same "the library's sources are the host test's, too" "$sources" "$(of libvxsubtitle_test srcs | grep '^subtitle/')"

if command -v bpfmt >/dev/null; then
    form=$(bpfmt -d Android.bp)
    [ -z "$form" ] || { printf 'Android.bp is not in its form: bpfmt -w Android.bp\n%s\n' "$form"; problems=$((problems + 1)); }
else
    echo "SKIPPED: bpfmt (Debian: blueprint-tools) is not installed, Android.bp's form was not looked at"
fi
echo "Android.bp: $(wc -l <<<"$sources") sources, $(of libvxsubtitle shared_libs | wc -l) libraries; $problems problems"
[ "$problems" -eq 0 ]
