#!/bin/sh
# Runs fuzz targets, each driver of a target beside the others: tools/fuzz.sh [SECONDS [TARGET...]]
# New inputs are kept in build/fuzz-corpus/TARGET and go into the next run, findings in build/fuzz-findings.
set -u
cd "$(dirname "$0")/.." || exit

programs=build/fuzz/fuzz
findings=build/fuzz-findings
seconds=${1:-60}
[ $# -eq 0 ] || shift
if [ $# -eq 0 ]; then
    for program in "$programs"/fuzz_*; do
        [ -x "$program" ] && [ ! -d "$program" ] && set -- "$@" "${program##*/fuzz_}"
    done
fi

for target in "$@"; do
    if [ ! -x "$programs/fuzz_$target" ]; then
        echo "fuzz: there is no target '$target'" >&2
        exit 2
    fi
done

pids=
trap 'kill $pids 2>/dev/null; exit 130' INT TERM

# run TARGET DRIVER
run() {
    # an index may ask for gigabytes, which a television refuses and a sanitizer fills
    export ASAN_OPTIONS=max_allocation_size_mb=256
    dictionary=fuzz/dict/$1.dict
    [ -f "$dictionary" ] || dictionary=
    exec nice "$programs/fuzz_$1" --driver="$2" -max_total_time="$seconds" -timeout=10 -max_len=16384 \
        -malloc_limit_mb=10000 -rss_limit_mb=4096 -print_final_stats=1 ${dictionary:+-dict="$dictionary"} \
        -artifact_prefix="$findings/$1-$2-" "build/fuzz-corpus/$1" "fuzz/corpus/$1" 2>"$findings/$1-$2.log" >/dev/null
}

statistic() {
    sed -n "s/^stat::$1: *//p" "$findings/$2.log" | tail -n 1
}

# report TARGET DRIVER STATUS
report() {
    finding=none
    [ "$3" -eq 0 ] || finding=yes
    printf '%-12s %-8s %12s %8s %10s  %s\n' "$1" "$2" "$(statistic number_of_executed_units "$1-$2")" \
        "$(statistic average_exec_per_sec "$1-$2")" "$(statistic new_units_added "$1-$2")" $finding
    [ "$3" -ne 0 ] || return 0
    failed=1
    input=$(sed -n 's/.*Test unit written to //p' "$findings/$1-$2.log" | tail -n 1)
    echo "    log:    $findings/$1-$2.log"
    grep -m 1 -e '^SUMMARY' -e 'runtime error' -e '^fuzz:' "$findings/$1-$2.log" | sed 's/^/    says:   /'
    [ -z "$input" ] || echo "    replay: $programs/fuzz_$1 --driver=$2 $input"
}

failed=0
mkdir -p "$findings"
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
exit $failed
