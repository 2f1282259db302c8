#!/usr/bin/env bash
# Every code block of docs/integrating.md is a sample, which is built and run, or a picture ("text"); every sample of C++
# has its test here. What a product names of Android.bp is there.
#
# usage: blocks_test.sh SOURCE_DIR
set -euo pipefail
cd "$1"
document=docs/integrating.md

blocks=0
problems=0
problem() {
    echo "$document:$*" >&2
    problems=$((problems + 1))
}

number=0
inside=
before=
while IFS= read -r line; do
    number=$((number + 1))
    if [[ $line == '```'* && -n $inside ]]; then
        inside=
    elif [[ $line == '```'* ]]; then
        inside=${line#'```'}
        blocks=$((blocks + 1))
        if [[ -z $inside ]]; then
            inside=unnamed
            problem "$number: a block that does not say its language"
        elif [[ $inside != text && ! $before =~ ^'<!-- sample: '[A-Za-z0-9_.]+' -->'$ ]]; then
            problem "$number: a block that is no sample: put <!-- sample: NAME --> above it"
        fi
    fi
    before=$line
done <"$document"
[ "$blocks" -gt 0 ] || problem "0: no code blocks"

for sample in $(sed -n 's/^<!-- sample: \(.*\) -->$/\1/p' "$document"); do
    case $sample in
    show.cpp | install.sh | cmake.sh | pkgconfig.sh | CMakeLists.txt) ;; # integrating_show, and tests/package
    *.cpp) grep -qx "#include \"$sample\"" tests/integrating/*Test.cpp || problem "0: no test includes $sample" ;;
    *.bp) ;;
    *) problem "0: nothing runs $sample" ;;
    esac
done

# The modules of Android.bp that the document names.
for module in $(grep -oE '\blibvxsubtitle[a-z_]*' <(grep -E 'PRODUCT_PACKAGES|shared_libs' "$document") | sort -u); do
    grep -q "name: \"$module\"" Android.bp || problem "0: Android.bp has no module $module"
done

echo "integrating.md: $blocks code blocks; $problems problems"
[ "$problems" -eq 0 ]
