#!/usr/bin/env bash
# Builds the release library, installs it, compares its exported symbols with the reviewed list, looks at its hardening,
# compiles every installed header alone, and builds and runs a separate little project against the package, by CMake and by
# pkg-config.
#
# usage: package_test.sh SOURCE_DIR WORK_DIR PROCESSOR [TOOLCHAIN_FILE EMULATOR COMPILER]
set -euo pipefail
source=$1 work=$2 processor=$3 toolchain=${4:-} emulator=${5:-} compiler=${6:-g++}
prefix=$work/prefix
expected=$source/tests/package/symbols/$processor.txt

options=(-G Ninja -DCMAKE_BUILD_TYPE=Release)
[ -z "$toolchain" ] || options+=("-DCMAKE_TOOLCHAIN_FILE=$toolchain")

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

rm -rf "$prefix" "$work/consumer"
cmake -S "$source" -B "$work/build" "${options[@]}" \
    -DVXSUBTITLE_BUILD_TESTS=OFF -DVXSUBTITLE_BUILD_TOOLS=OFF -DVXSUBTITLE_STACK_PROTECTOR=ON \
    -DCMAKE_INSTALL_LIBDIR=lib > "$work.configure.log"
cmake --build "$work/build" -j2 > "$work.build.log" || { tail -40 "$work.build.log"; fail "the release build"; }
cmake --install "$work/build" --prefix "$prefix" > "$work.install.log"

# Exported symbols. After a reviewed change: VXSUBTITLE_ACCEPT_SYMBOLS=1 ctest -R package
nm -D --defined-only "$prefix/lib/libvxsubtitle.so" | awk '{print $NF}' | LC_ALL=C sort > "$work.symbols"
[ -z "${VXSUBTITLE_ACCEPT_SYMBOLS:-}" ] || cp "$work.symbols" "$expected"
diff -u "$expected" "$work.symbols" | c++filt || fail "the exported symbols are not those of $expected"

"$source/tests/package/hardening_test.sh" "$prefix/lib/libvxsubtitle.so" "$source" "$work" || fail "the hardening"

# What lies directly in subtitle/ is public: every header there is installed, and compiles alone.
for header in "$source"/subtitle/*.h; do
    name=$(basename "$header")
    [ -e "$prefix/include/vxsubtitle/subtitle/$name" ] || fail "subtitle/$name is not installed"
done
for header in "$prefix"/include/vxsubtitle/subtitle/*.h; do
    echo "#include \"subtitle/$(basename "$header")\"" |
        "$compiler" -std=gnu++17 -fsyntax-only -Wall -Wextra -Werror -I"$prefix/include/vxsubtitle" \
            -I"$prefix/include/vxsubtitle/platform" -isystem /usr/include/android -x c++ - ||
        fail "$(basename "$header") does not compile alone"
done

# Debian's libutils for a second processor needs the empty 7z.so, see platform/host/CMakeLists.txt.
seven=$work/build/platform/host/7z.so
link=""
[ -z "$toolchain" ] || link="-Wl,--no-as-needed $seven -Wl,--as-needed -Wl,-rpath,$(dirname "$seven")"

# A project of its own, against the package.
printf '1\r\n00:00:01,000 --> 00:00:02,000\r\nfrom the package\r\n\r\n' > "$work.srt"
cmake -S "$source/tests/package/consumer" -B "$work/consumer" "${options[@]}" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_FIND_ROOT_PATH="$prefix" -DCMAKE_EXE_LINKER_FLAGS="$link" > "$work.consumer.log"
cmake --build "$work/consumer" >> "$work.consumer.log" 2>&1 || { tail -20 "$work.consumer.log"; fail "the consumer"; }
[ "$($emulator "$work/consumer/consumer" "$work.srt")" = "from the package" ] || fail "the consumer's output"

if command -v pkg-config > /dev/null; then
    flags=$(PKG_CONFIG_PATH=$prefix/lib/pkgconfig pkg-config --define-variable=prefix="$prefix" --cflags --libs vxsubtitle)
    # shellcheck disable=SC2086
    "$compiler" -std=gnu++17 -fno-rtti "$source/tests/package/consumer/main.cpp" $link $flags -Wl,-rpath,"$prefix/lib" -o "$work.pc"
    [ "$($emulator "$work.pc" "$work.srt")" = "from the package" ] || fail "the pkg-config consumer's output"
else
    echo "pkg-config is not installed: its file was not tried"
fi
echo "package: $(wc -l < "$work.symbols") exported symbols, installed headers compile alone, consumers run"
