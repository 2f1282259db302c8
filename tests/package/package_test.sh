#!/usr/bin/env bash
# Builds the release library, installs it, compares its exported symbols with the reviewed list, looks at its hardening,
# compiles every installed header alone, and builds and runs projects of their own that know the package alone: in a
# folder of one's choice, moved from there, and in the default one.
#
# usage: package_test.sh SOURCE_DIR WORK_DIR PROCESSOR [TOOLCHAIN_FILE EMULATOR COMPILER]
set -euo pipefail
source=$1 work=$2 processor=$3 toolchain=${4:-} emulator=${5:-} compiler=${6:-g++}
prefix=$work/prefix
expected=$source/tests/package/symbols/$processor.txt

# Projects are set up as their owners would: nothing but their compiler is given to them.
export CMAKE_GENERATOR=Ninja CXX=$compiler
[ -z "$toolchain" ] || export CMAKE_TOOLCHAIN_FILE=$toolchain
unset PKG_CONFIG_PATH PKG_CONFIG_LIBDIR PKG_CONFIG_SYSROOT_DIR CMAKE_PREFIX_PATH LD_LIBRARY_PATH DESTDIR

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

command -v pkg-config > /dev/null || fail "pkg-config is not installed; tools/setup.sh test installs it"

mkdir -p "$work"
rm -rf "$prefix" "$work/moved" "$work/staged" "$work/samples" "$work/consumer" "$work/new"
cmake -S "$source" -B "$work/build" -DCMAKE_BUILD_TYPE=Release \
    -DVXSUBTITLE_BUILD_TESTS=OFF -DVXSUBTITLE_BUILD_TOOLS=OFF -DVXSUBTITLE_STACK_PROTECTOR=ON \
    > "$work.configure.log"
cmake --build "$work/build" -j2 > "$work.build.log" || { tail -40 "$work.build.log"; fail "the release build"; }
cmake --install "$work/build" --prefix "$prefix" > "$work.install.log"
DESTDIR=$work/staged cmake --install "$work/build" >> "$work.install.log"  # the default prefix

# Exported symbols. After a reviewed change: VXSUBTITLE_ACCEPT_SYMBOLS=1 ctest -R package
nm -D --defined-only "$prefix/lib/libvxsubtitle.so" | awk '{print $NF}' | LC_ALL=C sort > "$work.symbols"
[ -z "${VXSUBTITLE_ACCEPT_SYMBOLS:-}" ] || cp "$work.symbols" "$expected"
diff -u "$expected" "$work.symbols" | c++filt || fail "the exported symbols are not those of $expected"

"$source/tests/package/hardening_test.sh" "$prefix/lib/libvxsubtitle.so" "$source" "$work" || fail "the hardening"

# What lies directly in subtitle/ is public: every header there is installed, and compiles alone, as C++14 and with
# nothing of the platform but what Debian packages with libutils.
for header in "$source"/subtitle/*.h; do
    name=$(basename "$header")
    [ -e "$prefix/include/vxsubtitle/subtitle/$name" ] || fail "subtitle/$name is not installed"
done
for header in "$prefix"/include/vxsubtitle/subtitle/*.h; do
    echo "#include \"subtitle/$(basename "$header")\"" |
        "$compiler" -std=c++14 -fsyntax-only -Wall -Wextra -Werror -I"$prefix/include/vxsubtitle" \
            -isystem /usr/include/android -x c++ - ||
        fail "$(basename "$header") does not compile alone"
done

# No file of the package knows where it was built or installed.
! grep -rIlF -e "$work" -e "$source" -e /usr/local "$prefix" "$work/staged" || fail "these files name a folder"

cmake -DDOCUMENT="$source/docs/integrating.md" -DFOLDER="$work/samples" -P "$source/tests/integrating/Samples.cmake" \
    > "$work.samples.log"
printf '1\r\n00:00:01,000 --> 00:00:02,000\r\nfrom the package\r\n\r\n' > "$work.srt"

says() {
    local expectation=$1 output
    shift
    output=$("$@") || fail "$* ended with status $?"
    [ "$output" = "$expectation" ] || fail "$* says: $output"
}

# try_package NAME FOLDER PREFIX: the document's project against the package in FOLDER, by CMake and by pkg-config, as the
# document has them.
try_package() {
    local folder=$work/new/$1 way program
    for way in cmake pkgconfig; do
        mkdir -p "$folder/$way"
        cp "$work/samples/show.cpp" "$work/samples/CMakeLists.txt" "$work/samples/$way.sh" "$folder/$way"
        (cd "$folder/$way" && PREFIX=$3 sh -e ./$way.sh) > "$folder/$way.log" 2>&1 ||
            { tail -20 "$folder/$way.log"; fail "the project by $way, package $1"; }
        program=$folder/$way/show
        [ $way = pkgconfig ] || program=$folder/$way/build/show
        # shellcheck disable=SC2086  # the emulator may be none
        says "from the package" $emulator "$program" "$work.srt" 1500
        readelf -d "$program" | grep -q "R.*PATH.*$2/lib" || fail "$program does not look for the library in $2/lib"
    done
}

# The default folder, where no prefix needs to be said: /usr/local of a name space of its own. Where none can be had, or
# the tools lie in /usr/local themselves, the same installation in the folder that it was staged in.
try_default() {
    if [[ $(type -p cmake ninja pkg-config "$compiler") != */usr/local/* ]] &&
        unshare --map-root-user --mount mount --bind "$work/staged/usr/local" /usr/local 2> /dev/null; then
        export work emulator
        export -f try_package says fail
        unshare --map-root-user --mount bash -euo pipefail -c \
            'mount --bind "$work/staged/usr/local" /usr/local && try_package default /usr/local ""'
    else
        echo "SKIPPED: no name space for /usr/local: the default prefix was tried in the folder that it was staged in"
        try_package default "$work/staged/usr/local" "$work/staged/usr/local"
    fi
}

try_package chosen "$prefix" "$prefix"

# Every sample alone, and a program that draws and that derives from a class.
cmake -S "$source/tests/package/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$prefix" \
    -DSAMPLES="$work/samples" > "$work.consumer.log"
cmake --build "$work/consumer" >> "$work.consumer.log" 2>&1 || { tail -20 "$work.consumer.log"; fail "the consumer"; }
# shellcheck disable=SC2086
says "from the package" $emulator "$work/consumer/consumer" "$work.srt"

mv "$prefix" "$work/moved"
# The package asks for the C++ of its headers, be the compiler's own default an older one.
CXXFLAGS=-std=c++98 try_package moved "$work/moved" "$work/moved"
export PKG_CONFIG_PATH=$work/moved/lib/pkgconfig
# shellcheck disable=SC2046
"$compiler" -std=c++17 -fno-rtti "$source/tests/package/consumer/main.cpp" -I"$work/samples" \
    $(pkg-config --cflags --libs vxsubtitle_platform) -Wl,-rpath,"$work/moved/lib" -o "$work.surface"
# shellcheck disable=SC2086
says "from the package" $emulator "$work.surface" "$work.srt"
unset PKG_CONFIG_PATH

try_default
echo "package: $(wc -l < "$work.symbols") exported symbols, installed headers compile alone, projects run with a package" \
    "in a chosen folder, moved, and in the default one"
