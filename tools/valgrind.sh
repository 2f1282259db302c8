#!/bin/sh
# Runs the seeds of every fuzz target under valgrind: tools/valgrind.sh (after a build of the preset dev).
# What it says stands in build/valgrind.log; a report or a leak fails it.
set -u
cd "$(dirname "$0")/.." || exit

failed=0
: >build/valgrind.log
for program in build/dev/fuzz/replay_*; do
    [ -x "$program" ] && [ -f "$program" ] || continue
    target=${program##*/replay_}
    seeds=fuzz/corpus/$target
    [ -d "$seeds" ] || continue
    # shellcheck disable=SC2046  # names without blanks
    if valgrind -q --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite --log-file=build/valgrind.log.%p \
        "$program" $(ls -d "$seeds"/* | awk 'NR % 3 == 1' | head -n 40) >/dev/null; then
        echo "valgrind: $target passed"
    else
        echo "valgrind: $target FAILED"
        failed=$((failed + 1))
    fi
done
cat build/valgrind.log.* >build/valgrind.log 2>/dev/null
rm -f build/valgrind.log.*
[ "$failed" -eq 0 ] || cat build/valgrind.log
exit "$failed"
