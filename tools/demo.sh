#!/bin/sh
# Plays subtitles in the terminal, then makes a DVD subtitle's picture: tools/demo.sh VXSUB MAKE_VOBSUB.
# FILE names the user's own subtitles, SPEED how fast they are played.
set -u

vxsub=$1
make_vobsub=$2
file=${FILE:-}

if [ -n "$file" ]; then
    exec "$vxsub" play "$file" --speed "${SPEED:-10}"
fi

sample=examples/demo.srt
echo "Playing $sample, ${SPEED:-20} times as fast as the movie."
echo
"$vxsub" play "$sample" --speed "${SPEED:-20}" || exit

movie=build/demo/movie.idx
echo
echo "Making a DVD's subtitles, $movie, and drawing them as a television would:"
mkdir -p build/demo && "$make_vobsub" "$movie" || exit
"$vxsub" render "$movie" --index 2 -o build/demo/movie.png || exit
"$vxsub" sheet "$movie" -o build/demo/sheet.png || exit
echo
echo "What to try next:"
echo
printf '    %-50s %s\n' \
    "make demo FILE=movie.srt" "subtitles of your own (SPEED=1: as fast as the movie)" \
    "$vxsub list $sample" "every entry with its times" \
    "$vxsub at $sample 12.5s" "what is shown at that moment" \
    "$vxsub info $movie" "the DVD's tracks and colours" \
    "$vxsub --help" "all that it can do" \
    "make test" "the library's tests"
