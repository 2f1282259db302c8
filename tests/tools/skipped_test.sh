#!/usr/bin/env bash
# What tools/check.sh says of skipped tests, and that none is skipped without a word.
#
# usage: skipped_test.sh SOURCE_DIR
set -euo pipefail
cd "$1"

diff -u --label expected --label said - <(tools/check.sh --skipped tests/tools/skipped.log) <<'EOT' || exit 1

Skipped, and why (4):
    python3 is not installed: charset_tables, Heap.Fails
    a 64-bit machine may have 4 GiB: Heap.HoldsLittle
    no reason given: Typed/0.Says
EOT
[ -z "$(tools/check.sh --skipped /dev/null)" ] || { echo "FAILED: something is said when nothing is skipped" >&2; exit 1; }
! grep -rnE 'GTEST_SKIP\(\) *;' tests || { echo "FAILED: skipped without a reason" >&2; exit 1; }
echo "skipped: each test that is skipped says why, at the end"
