#!/bin/sh
# tests_built_test.sh SOURCE BUILD [FOLDER...]: every *Test.cpp below SOURCE/tests is compiled by some target of BUILD, but
# for those in the folders named.
set -eu
source=$1
build=$2
shift 2

missing=0
for file in $(cd "$source" && find tests -name '*Test.cpp' | sort); do
    for folder in "$@"; do
        case $file in "$folder"/*) continue 2 ;; esac
    done
    grep -q "\"file\": \".*/$file\"" "$build/compile_commands.json" && continue
    echo "$file is built by no target: give it a vx_test() in tests/CMakeLists.txt"
    missing=1
done
exit $missing
