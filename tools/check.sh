#!/bin/sh
# Runs a preset's tests, and ends with those that were skipped, and why: tools/check.sh PRESET [JOBS].
# tools/check.sh --skipped LOG: the second half alone, of a log that ctest wrote.
set -u

# The log holds each test's output; GoogleTest tells the reason of a skip line by line, a script after "SKIPPED: ".
skipped() {
    awk '
        function tell(name, reason) {
            sub(/^SKIPPED: /, "", reason)
            if (reason == "") reason = "no reason given"
            if (!(reason in names)) order[++reasons] = reason
            names[reason] = names[reason] (names[reason] == "" ? "" : ", ") name
            count++
        }
        /^[0-9]+\/[0-9]+ Testing: / { program = $3 }
        /^[^ ]+:[0-9]+: Skipped$/ { reading = 1; reason = ""; next }
        /^\[  SKIPPED \] .* \([0-9]+ ms\)$/ {
            if (!reading) reason = ""
            reading = 0
            name = $0
            sub(/^\[  SKIPPED \] /, "", name)
            sub(/(, where .*)? \([0-9]+ ms\)$/, "", name)
            tell(name, reason)
            next
        }
        reading && NF > 0 { reason = reason (reason == "" ? "" : " ") $0; next }
        /^SKIPPED: / { tell(program, $0) }
        END {
            if (count > 0) printf "\nSkipped, and why (%d):\n", count
            for (i = 1; i <= reasons; i++) printf "    %s: %s\n", order[i], names[order[i]]
        }' "$1"
}

if [ "$1" = --skipped ]; then
    skipped "$2"
    exit
fi

ctest --preset "$1" -j "${2:-1}"
status=$?
skipped "build/$1/Testing/Temporary/LastTest.log"
exit $status
