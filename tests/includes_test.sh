#!/usr/bin/env bash
# The rooms of subtitle/ know only what lies below them: no include leads up, and the public headers stand on their own.
#
# usage: includes_test.sh SOURCE_DIR
set -euo pipefail
export LC_ALL=C
cd "$1"

types=subtitle/SubtitleTypes.h
public='subtitle/[^/]*\.h'

# What a file may include of subtitle/, by where it lies: a pattern for the whole path. The order is from the bottom.
allowed_in() {
    case $1 in
    subtitle/system/*) echo "$types|subtitle/system/.*" ;;
    subtitle/charset/*) echo "$types|subtitle/charset/.*" ;;
    subtitle/text/*) echo "$types|subtitle/(system|text)/.*" ;;
    subtitle/vobsub/*) echo "$types|subtitle/(text|charset|system|vobsub)/.*" ;;
    subtitle/parser/*)
        echo "subtitle/Subtitle(Types|Parser|FileProcess)\.h|subtitle/(text|charset|system|parser)/.*"
        ;;
    subtitle/*/*) ;;
    subtitle/*.h) echo "$public" ;;
    subtitle/*.cpp) echo "$public|subtitle/(text|charset|system|vobsub|parser)/.*" ;;
    esac
}

# Headers with a folder are the platform's; of those the public headers know two.
platform='<[^>]*/[^>]*>'
platform_in_public='<utils/(Mutex|StrongPointer)\.h>'

problem() {
    echo "$1: $2 $3"
    problems=$((problems + 1))
}

problems=0
count=0
for room in subtitle/*/; do
    [ -n "$(allowed_in "$room")" ] || problem "$room" "" "is a room that this test does not know"
done
while IFS=: read -r file line include; do
    include=$(sed -E 's/^[^<"]*(<[^>]*>|"[^"]*"|[A-Za-z_].*).*/\1/' <<<"$include")
    path=${include:1:-1}
    count=$((count + 1))
    case $include in
    *.cpp?) problem "$file:$line" "$include" "is a source" ;;
    \"subtitle/* | '<subtitle/'*)
        [[ /$path/ != */../* ]] || problem "$file:$line" "$include" "goes back"
        [[ $path =~ ^($(allowed_in "$file"))$ ]] || problem "$file:$line" "$include" "leads up"
        ;;
    '<'*)
        if [[ $file =~ ^$public$ && $include =~ ^$platform$ && ! $include =~ ^$platform_in_public$ ]]; then
            problem "$file:$line" "$include" "is the platform's, in a public header"
        fi
        ;;
    *) problem "$file:$line" "$include" "is not named from the project's root" ;;
    esac
done < <(grep -rnE '^[[:space:]]*#[[:space:]]*(include|include_next|import)\>' subtitle)

[ "$count" -gt 0 ] || problem subtitle "" "no include was found"
echo "includes: $count looked at, $problems problems"
[ "$problems" -eq 0 ]
