#!/usr/bin/env bash
# docs/contract.md, the contract in one table, names every operation that the public headers declare, and no other.
#
# usage: contract_test.sh SOURCE_DIR
set -euo pipefail
export LC_ALL=C
cd "$1"

# Names in front of an opening parenthesis, without the comments, the constructors, the destructors and the compiler's words.
declared() {
    sed -E 's,//.*,,; s,^#.*,,' subtitle/*.h | grep -oE '~?[A-Za-z_][A-Za-z_0-9]*\(' | tr -d '(' | grep -v '^~' |
        grep -vxE "__attribute__|visibility|$(sed -nE 's/^class (VXSUBTITLE_API )?([A-Za-z0-9_]+) .*/\2/p' subtitle/*.h | paste -sd'|')" |
        sort -u
}

# The names in code quotes of the operations' column: the first of a table's, the second where the first is the class.
told() {
    awk -F'|' '/^\| (class \| )?operation \|/ { column = $2 ~ /class/ ? 3 : 2 } /^\|/ && !/^\|-/ { print $column }
               /^`Compare`/ { print }' docs/contract.md |
        grep -oE '`[A-Za-z_][A-Za-z_0-9]*(\([a-z, ]*\))?`' | sed -E 's/[`]//g; s/\(.*//' | sort -u
}

[ "$(declared | wc -l)" -gt 50 ] || { echo "FAILED: the headers' operations were not found" >&2; exit 1; }
diff -u --label "subtitle/*.h" --label docs/contract.md <(declared) <(told) || { echo "FAILED" >&2; exit 1; }
echo "contract: $(declared | wc -l) operations, all in docs/contract.md"
