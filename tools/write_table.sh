#!/bin/sh
# Puts standard input in place of what stands between `<!-- table: NAME -->` and the next `<!-- end -->` of a document:
# tools/write_table.sh FILE NAME
set -eu
file=$1
name=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/table"
[ -s "$work/table" ] || { echo "write_table: there is no table on standard input" >&2; exit 1; }

awk -v begin="<!-- table: $name -->" -v table="$work/table" '
    $0 == begin {
        print begin "\n"
        while ((getline line <table) > 0) print line
        print ""
        open = 1
        ++found
    }
    $0 == "<!-- end -->" { open = 0 }
    !open
    END { exit found == 1 && !open ? 0 : 1 }' "$file" >"$work/document" || {
    echo "write_table: $file has not exactly one table '$name' with an end" >&2
    exit 1
}
cat "$work/document" >"$file"  # the file keeps its mode
