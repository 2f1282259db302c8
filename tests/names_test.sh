#!/usr/bin/env bash
# Every deliberate oddity has one name, and the name stands in three places: `kept(name):` at the lines of subtitle/ that
# do it, the anchor of its row in docs/formats.md or docs/integrating.md, and `kept(name)` at a test that fails without it.
#
# usage: names_test.sh SOURCE_DIR
set -euo pipefail
export LC_ALL=C
cd "$1"

name='[a-z][a-z0-9]*(-[A-Za-z0-9]+)*'
docs=(docs/formats.md docs/integrating.md)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sources=(--include='*.cpp' --include='*.h' --include='*.def')

# The names of the marks in the comments and texts below a folder, one a mark.
marked() {
    grep -rhE "${sources[@]}" '("|//).*kept\(' "$1" | sed -E 's,^[^"/]*(/[^"/]+)*("|//),,' |
        grep -oE "(^|[^A-Za-z0-9_])kept\($name\)" | sed -E 's/.*kept\((.*)\)/\1/' || true
}

# file:line: of comments in which "kept:" or "kept(" is no mark with a name. `$2` is what follows a good mark.
nameless() {
    grep -rnE "${sources[@]}" '//.*kept[:(]' "$1" |
        awk -v good="(^|[^A-Za-z0-9_])kept\\\\($name\\\\)$2" '{
            comment = substr($0, index($0, "//"))
            gsub(good, " ", comment)
            if (comment ~ /(^|[^A-Za-z0-9_])kept[:(]/) print
        }' || true
}

marked subtitle >"$work/code"
marked tests >"$work/tests"
grep -hoE '<a id="[^"]*"' "${docs[@]}" | sed -E 's/.*"(.*)"/\1/' >"$work/docs" || true
for place in code docs tests; do sort -u "$work/$place" >"$work/$place.names"; done
sort -u "$work"/*.names >"$work/all"

{
    for place in code docs tests; do
        comm -23 "$work/all" "$work/$place.names" | sed "s/\$/ $place/"
    done | sort | awk '
        $1 != last { if (last != "") print last ": missing in " places; last = $1; places = $2; next }
        { places = places ", " $2 }
        END { if (last != "") print last ": missing in " places }'
    sort "$work/docs" | uniq -d | sed 's/$/: more than one anchor in docs/'
    grep -vxE "$name" "$work/docs" | sed 's/.*/"&": an anchor that is no name/' || true
    # shellcheck disable=SC2016  # the backquotes are Markdown's
    grep -hoE '<a id="[^"]*"></a>`[^`]*`|<a id="[^"]*"(></a>)?([^`]|$)' "${docs[@]}" |
        awk -F'["`]' '$2 != $4 { print $2 ": the anchor is not followed by its name in code quotes" }' || true
    nameless subtitle ':' | sed 's/$/   <- a mark without a name/'
    nameless tests '' | sed 's/$/   <- a mark without a name/'
} >"$work/problems"

count() { wc -l <"$1" | tr -d ' '; }
[ "$(count "$work/all")" -gt 0 ] || echo "no name was found" >>"$work/problems"
cat "$work/problems"
echo "names: $(count "$work/all"), with $(count "$work/code") marks in the code, $(count "$work/docs") anchors in the" \
    "documents and $(count "$work/tests") marks in the tests; $(count "$work/problems") problems"
[ ! -s "$work/problems" ]
