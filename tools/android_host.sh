#!/usr/bin/env bash
# Builds Android.bp's host test module as the file says, with this machine's compiler and Debian's Android libraries,
# and runs it: tools/android_host.sh
set -euo pipefail
cd "$(dirname "$0")/.."
. tests/package/blueprint.sh
module=libvxsubtitle_test
out=build/android-host
compiler=(${CMAKE_CXX_COMPILER_LAUNCHER:-} g++)
libraries=/usr/lib/$(g++ -print-multiarch)/android

property() { blueprint_of Android.bp "$module" "$1"; }

flags=("-std=$(property cpp_std)" -O1 -fPIC -isystem /usr/include/android)
[ "$(property rtti)" != false ] || flags+=(-fno-rtti)
mapfile -t -O ${#flags[@]} flags < <(property cppflags)
for folder in $(property local_include_dirs); do flags+=("-I$folder"); done

links=()
for library in $(property shared_libs); do links+=("-l${library#lib}"); done

mkdir -p "$out"
property srcs >"$out/sources"
objects=()
while read -r source; do objects+=("$out/${source//\//_}.o"); done <"$out/sources"

# shellcheck disable=SC2016  # $1 is the inner shell's
xargs -P "${JOBS:-$(nproc)}" -n 1 bash -c '
    source=${*: -1}
    "${@:1:$#-1}" -c -o "'"$out"'/${source//\//_}.o" "$source"' - "${compiler[@]}" "${flags[@]}" <"$out/sources"
g++ -o "$out/$module" "${objects[@]}" -L"$libraries" "-Wl,-rpath,$libraries" "-Wl,-rpath-link,$libraries" \
    "${links[@]}" -lgtest_main -lgtest -ldl -lpthread
"$out/$module" --gtest_brief=1
