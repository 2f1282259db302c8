#!/bin/sh
# Builds and runs fuzz targets, each driver of a target beside the others: tools/fuzz.sh [SECONDS [TARGET...]]
# New inputs are kept in build/fuzz-corpus/TARGET and go into the next run, findings in build/fuzz-findings. With RECORD
# set, the figures become the targets' rows in docs/quality.md.
set -u
cd "$(dirname "$0")/.." || exit

programs=build/fuzz/fuzz
findings=build/fuzz-findings
seconds=${1:-60}
[ $# -eq 0 ] || shift

# Every target has its seeds, so their folders are the list.
known=$(for seeds in fuzz/corpus/*/; do basename "$seeds"; done)
for target in "$@"; do
    if ! echo "$known" | grep -qxF -e "$target"; then
        echo "fuzz: there is no target '$target', but there are:" "$(echo "$known" | tr '\n' ' ')" >&2
        exit 2
    fi
done
case $seconds in
'' | *[!0-9]*) echo "fuzz: '$seconds' is no number of seconds" >&2 && exit 2 ;;
esac
# shellcheck disable=SC2086  # a list of words
[ $# -gt 0 ] || set -- $known

# shellcheck disable=SC2046  # a list of words
tools/setup.sh build fuzz && cmake --preset fuzz --log-level=WARNING &&
    cmake --build --preset fuzz --target $(printf 'fuzz_%s ' "$@") || exit

pids=
trap 'kill $pids 2>/dev/null; exit 130' INT TERM

# The words of the target's format; the dialects of .sub share theirs.
dictionary_of() {
    if [ -f "fuzz/dict/$1.dict" ]; then
        echo "fuzz/dict/$1.dict"
    elif grep -q "^VX_SUB_DIALECT([^,]*, [^,]*, $1," subtitle/parser/SubDialects.def; then
        echo fuzz/dict/sub.dict
    fi
}

# run TARGET DRIVER
run() {
    # an index may ask for gigabytes, which a television refuses and a sanitizer fills
    export ASAN_OPTIONS=max_allocation_size_mb=256
    dictionary=$(dictionary_of "$1")
    exec nice "$programs/fuzz_$1" --driver="$2" -max_total_time="$seconds" -timeout=10 -max_len=16384 \
        -malloc_limit_mb=10000 -rss_limit_mb=4096 -print_final_stats=1 ${dictionary:+-dict="$dictionary"} \
        -artifact_prefix="$findings/$1-$2-" "build/fuzz-corpus/$1" "fuzz/corpus/$1" 2>"$findings/$1-$2.log" >/dev/null
}

statistic() {
    figure=$(sed -n "s/^stat::$1: *//p" "$findings/$2.log" | tail -n 1)
    echo "${figure:-0}"
}

# report TARGET DRIVER STATUS
report() {
    finding=none
    [ "$3" -eq 0 ] || finding=yes
    row=$(printf '%-12s %-8s %12s %8s %10s  %s\n' "$1" "$2" "$(statistic number_of_executed_units "$1-$2")" \
        "$(statistic average_exec_per_sec "$1-$2")" "$(statistic new_units_added "$1-$2")" $finding)
    echo "$row"
    echo "$row" >>"$findings/figures"
    [ "$3" -ne 0 ] || return 0
    failed=1
    input=$(sed -n 's/.*Test unit written to //p' "$findings/$1-$2.log" | tail -n 1)
    echo "    log:    $findings/$1-$2.log"
    grep -m 1 -e '^SUMMARY' -e 'runtime error' -e '^fuzz:' "$findings/$1-$2.log" | sed 's/^/    says:   /'
    [ -z "$input" ] || echo "    replay: $programs/fuzz_$1 --driver=$2 $input"
}

# A row for each target, its drivers' figures added up; the rows of targets that did not run stay.
record() {
    {
        echo '| target | for | executions | a second | new inputs | findings |'
        echo '|---|---|---|---|---|---|'
        {
            awk -v seconds="$seconds" '
                { executions[$1] += $3; rate[$1] += $4; inputs[$1] += $5; finding[$1] += $6 == "yes" }
                END {
                    for (target in executions)
                        printf "| `%s` | %d s | %d | %d | %d | %s |\n", target, seconds, executions[target],
                            rate[target], inputs[target], (finding[target] ? finding[target] : "none")
                }' "$findings/figures"
            sed -n '/^<!-- table: fuzz -->$/,/^<!-- end -->$/p' docs/quality.md | grep '^| `'
        } | LC_ALL=C sort -s -u -t '`' -k 2,2
    } | tools/write_table.sh docs/quality.md fuzz
}

failed=0
mkdir -p "$findings"
: >"$findings/figures"
printf '%-12s %-8s %12s %8s %10s  %s\n' target driver executions per\ s new\ inputs finding
for target in "$@"; do
    mkdir -p "build/fuzz-corpus/$target"
    drivers=$("$programs/fuzz_$target" --drivers)
    pids=
    for driver in $drivers; do
        run "$target" "$driver" &
        pids="$pids $!"
    done
    waiting=$pids
    for driver in $drivers; do
        pid=${waiting# }
        pid=${pid%% *}
        waiting=${waiting# "$pid"}
        wait "$pid"
        report "$target" "$driver" $?
    done
done
[ -z "${RECORD:-}" ] || record
exit $failed
