#!/bin/sh
# Builds and runs fuzz targets, each driver of a target beside the others: tools/fuzz.sh [SECONDS [TARGET...]]
# New inputs are kept in build/fuzz-corpus/TARGET and go into the next run, findings in build/fuzz-findings. With RECORD
# set, the figures are added to the targets' rows in docs/quality.md. JOBS: so many drivers run at once, all without it.
#
# tools/fuzz.sh --minimise [TARGET...] chooses the inputs of both corpora that cover what all cover, and puts them into
# fuzz/corpus/TARGET, smallest first as long as they fit; seeds with a name of their own stay.
set -u
cd "$(dirname "$0")/.." || exit

programs=build/fuzz/fuzz
findings=build/fuzz-findings
largest=70000 # bytes that a target's inputs may have: below 1 MB for all targets
minimises=
if [ "${1:-}" = --minimise ]; then
    minimises=yes
    seconds=0
else
    seconds=${1:-60}
fi
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

# an index may ask for gigabytes, which a television refuses and a sanitizer fills
export ASAN_OPTIONS=max_allocation_size_mb=256

pids=
work=$(mktemp -d) || exit
trap 'rm -rf "$work"' EXIT
trap 'kill $pids 2>/dev/null; exit 130' INT TERM

# The words of the target's format; the dialects of .sub share theirs.
dictionary_of() {
    if [ -f "fuzz/dict/$1.dict" ]; then
        echo "fuzz/dict/$1.dict"
    elif grep -q "^VX_SUB_DIALECT([^,]*, [^,]*, $1," subtitle/parser/SubDialects.def; then
        echo fuzz/dict/sub.dict
    fi
}

# The seeds that a target borrows: the drivers of `work` are formats.
# borrowed TARGET DRIVER
borrowed() {
    [ "$1" != work ] || echo "fuzz/corpus/$2"
}

# run TARGET DRIVER
run() {
    dictionary=$(dictionary_of "$1")
    [ "$1" != work ] || dictionary=$(dictionary_of "$2")
    # shellcheck disable=SC2046  # no word or one
    exec nice "$programs/fuzz_$1" --driver="$2" -max_total_time="$seconds" -timeout=10 -max_len=16384 \
        -malloc_limit_mb=10000 -rss_limit_mb=4096 -print_final_stats=1 ${dictionary:+-dict="$dictionary"} \
        -artifact_prefix="$findings/$1-$2-" "build/fuzz-corpus/$1" "fuzz/corpus/$1" $(borrowed "$1" "$2") \
        2>"$findings/$1-$2.log" >/dev/null
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

# A row for each target that ran: its executions, findings and seconds are added to those in the table, a rate stands
# for each driver. The rows of targets that did not run stay.
record() {
    sed -n '/^<!-- table: fuzz -->$/,/^<!-- end -->$/p' docs/quality.md | grep '^| `' >"$work/rows"
    {
        echo '| target | executions so far | of 20 million | minutes | a second, in the last run | findings |'
        echo '|---|---|---|---|---|---|'
        {
            awk -F '|' -v seconds="$seconds" '
                FNR == NR {
                    name = $2
                    gsub(/[ `]/, "", name)
                    gsub(/,/, "", $3)
                    executions[name] = $3 + 0
                    minutes[name] = $5 + 0
                    found[name] = $7 + 0
                    next
                }
                {
                    split($0, figure, " ")
                    name = figure[1]
                    ran[name] = 1
                    executions[name] += figure[3]
                    minutes[name] += seconds / 60
                    rate[name] = rate[name] (rate[name] == "" ? "" : ", ") "`" figure[2] "` " figure[4]
                    found[name] += figure[6] == "yes"
                }
                END {
                    for (name in ran)
                        printf "| `%s` | %d | %d %% | %d | %s | %s |\n", name, executions[name],
                            executions[name] / 200000, minutes[name] + 0.5, rate[name],
                            (found[name] ? found[name] : "none")
                }' "$work/rows" "$findings/figures"
            cat "$work/rows"
        } | LC_ALL=C sort -s -u -t '`' -k 2,2
    } | tools/write_table.sh docs/quality.md fuzz
}

# merge TARGET COVERAGE-FLAG INTO FROM...
merge() {
    merged=$1
    flag=$2
    shift 2
    nice "$programs/fuzz_$merged" -merge=1 "$flag" -timeout=10 -max_len=16384 -malloc_limit_mb=10000 \
        -rss_limit_mb=4096 "$@" >"$findings/merge-$merged.log" 2>&1
}

# The names that libFuzzer gives: 40 hexadecimal digits.
nameless='^[0-9a-f]\{40\}$'

# First what covers every edge; then, as long as there is room, what covers how often they are taken.
minimise() {
    seeds=fuzz/corpus/$1
    mkdir -p "$work/$1/edges" "$work/$1/counts" "build/fuzz-corpus/$1"
    for seed in "$seeds"/*; do
        basename "$seed" | grep -q "$nameless" || cp "$seed" "$work/$1/edges"
    done
    named=$(find "$work/$1/edges" -type f | wc -l)
    if ! merge "$1" -use_counters=0 "$work/$1/edges" "$seeds" "build/fuzz-corpus/$1" ||
        ! cp "$work/$1/edges"/* "$work/$1/counts" ||
        ! merge "$1" -use_counters=1 "$work/$1/counts" "$seeds" "build/fuzz-corpus/$1"; then
        echo "fuzz: an input of $1 fails: $findings/merge-$1.log" >&2
        return 1
    fi
    find "$seeds" -type f | while read -r old; do
        if basename "$old" | grep -q "$nameless"; then rm "$old"; fi
    done
    for inputs in edges counts; do
        find "$work/$1/$inputs" -type f -printf '%s %p\n' | sort -n | while read -r size path; do
            used=$(cat "$seeds"/* | wc -c)
            [ $((used + size)) -le "$largest" ] || break
            [ -e "$seeds/$(basename "$path")" ] || cp "$path" "$seeds"
        done
    done
    set -- "$1" "$(find "$seeds" -type f | wc -l)" "$(cat "$seeds"/* | wc -c)"
    printf '%-12s %6d inputs, %d of them named, %8d bytes, %6d at the mean\n' "$1" "$2" "$named" "$3" $(($3 / $2))
}

failed=0
mkdir -p "$findings"
if [ -n "$minimises" ]; then
    for target in "$@"; do minimise "$target" || failed=1; done
    exit $failed
fi

: >"$findings/figures"
printf '%-12s %-8s %12s %8s %10s  %s\n' target driver executions per\ s new\ inputs finding
for target in "$@"; do
    mkdir -p "build/fuzz-corpus/$target"
    drivers=$("$programs/fuzz_$target" --drivers)
    while [ -n "$drivers" ]; do
        batch=$(echo "$drivers" | head -n "${JOBS:-100}")
        drivers=$(echo "$drivers" | tail -n "+$((${JOBS:-100} + 1))")
        pids=
        for driver in $batch; do
            run "$target" "$driver" &
            pids="$pids $!"
        done
        waiting=$pids
        for driver in $batch; do
            pid=${waiting# }
            pid=${pid%% *}
            waiting=${waiting# "$pid"}
            wait "$pid"
            report "$target" "$driver" $?
        done
    done
done
[ -z "${RECORD:-}" ] || record
exit $failed
