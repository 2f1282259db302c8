#!/usr/bin/env bash
# The Makefile's targets, `make help` and README.md name the same. "help" itself needs no mention.
#
# usage: targets_test.sh SOURCE_DIR
set -euo pipefail
export LC_ALL=C
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sed -n 's/^\.PHONY: //p' Makefile | tr ' ' '\n' | grep -vx help | sort -u >"$work/Makefile"
make -s help | grep -oE '\bmake [a-z][a-z-]*' | sed 's/make //' | sort -u >"$work/help"
# The commands at the beginning, and the words in backquotes from "The other targets" to the next section.
sed -n '/^## Try it$/,/^## What it does$/p' README.md >"$work/section"
{
    sed -n 's/^    make \([a-z-]*\).*/\1/p' "$work/section"
    # shellcheck disable=SC2016  # the backquotes are Markdown's
    sed -n '/^The other targets/,$p' "$work/section" | grep -oE '`[a-z-]+`' | tr -d '`' | grep -vx make
} | sort -u >"$work/README.md"

[ "$(wc -l <"$work/Makefile")" -gt 9 ] || { echo "FAILED: the Makefile's targets were not found" >&2; exit 1; }
for place in help README.md; do
    diff -u --label Makefile --label "$place" "$work/Makefile" "$work/$place" ||
        { echo "FAILED: $place does not name the Makefile's targets" >&2; exit 1; }
done
echo "targets: $(wc -l <"$work/Makefile"), the same in the Makefile, make help and README.md"
