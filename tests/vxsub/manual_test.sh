#!/usr/bin/env bash
# The manual page and the completions know what --help shows, and are what their readers take.
#
# usage: manual_test.sh VXSUB FOLDER-OF-THE-MADE-FILES [EMULATOR]
set -euo pipefail
vxsub=$1 made=$2 emulator=${3:-}

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# shellcheck disable=SC2086  # no word, or the emulator and its options
help() { $emulator "$vxsub" "$@" --help; }

# The names of the options, and of the commands, in a help text.
options_in() { sed -n '/^Options:/,/^[^ ]/p' | grep -oE '^ +(-[a-z],)?-?-[a-z0-9-]+' | grep -oE -e '-?-[a-z0-9-]+'; }
commands=$(help | sed -n '/^Commands:/,/^[^ ]/s/^  \([a-z][a-z]*\) .*/\1/p')
[ "$(echo "$commands" | wc -l)" -ge 7 ] || fail "the commands are not read from the help: $commands"

for command in $commands; do
    zsh_part=$(sed -n "/^        $command)/,/;;/p" "$made/_vxsub")
    grep -q "^\.SS \"vxsub $command\"" "$made/vxsub.1" || fail "vxsub.1 lacks $command"
    names=$(help "$command" | options_in)
    [ "$(echo "$names" | wc -l)" -ge 6 ] || fail "the options of $command are not read from its help: $names"
    for name in $names; do
        grep -qF -e "${name//-/\\-}" "$made/vxsub.1" || fail "vxsub.1 lacks $command $name"
        grep -qE "^    $command\) words='(.* )?$name( .*)?'" "$made/vxsub.bash" || fail "vxsub.bash lacks $command $name"
        grep -qE -e "['{,]$name[][},']" <<<"$zsh_part" || fail "_vxsub lacks $command $name"
    done
done

# complete WORD...: what bash offers for the last word
complete_words() (
    complete() { :; }
    # shellcheck source=/dev/null
    . "$made/vxsub.bash"
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _vxsub
    printf "%s\n" "${COMPREPLY[@]}" | LC_ALL=C sort | paste -sd " "
)
offers() {
    offered=$(complete_words "${@:2}")
    [ "$offered" = "$1" ] || fail "for '${*:2}' bash is offered '$offered', not '$1'"
}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/season"
touch "$folder/movie.srt" "$folder/MOVIE.SUB" "$folder/movie.mkv"
cd "$folder"
offers 'info' vxsub i
offers 'play push' vxsub p
offers '--speed' vxsub play --sp
offers 'smi' vxsub info --type sm
offers 'big5' vxsub list --native b
offers 'none' vxsub sheet movie.idx --background n
offers '' vxsub info --fps ''
offers 'season' vxsub info s
offers 'movie.srt' vxsub info m
offers 'MOVIE.SUB' vxsub --log list M
offers "movie.mkv movie.srt" vxsub render movie.idx -o movie

prefix=$folder/prefix
cmake -DCMAKE_INSTALL_PREFIX="$prefix" -P "$made/cmake_install.cmake" >install.log || fail "$(cat install.log)"
for installed in bin/vxsub share/man/man1/vxsub.1 share/bash-completion/completions/vxsub \
    share/zsh/site-functions/_vxsub; do
    [ -s "$prefix/$installed" ] || fail "$installed is not installed"
done

if command -v man >/dev/null && command -v groff >/dev/null; then
    warnings=$(LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l -Tutf8 -Z "$made/vxsub.1" 2>&1 >/dev/null)
    [ -z "$warnings" ] || fail "vxsub.1: $warnings"
    LC_ALL=C.UTF-8 MANWIDTH=100 man -l "$made/vxsub.1" 2>/dev/null | grep -qF 'vxsub list --json movie.srt | jq' || fail "vxsub.1 shows no example"
else
    echo "man and groff are not installed: vxsub.1 was not set"
fi
if command -v zsh >/dev/null; then
    zsh -n "$made/_vxsub" || fail "_vxsub is no zsh"
else
    echo "zsh is not installed: _vxsub was not read by it"
fi
echo "manual: $(echo "$commands" | wc -l) commands"
