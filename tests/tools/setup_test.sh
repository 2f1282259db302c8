#!/usr/bin/env bash
# tools/setup.sh says what apt is doing while it works, and what went wrong; all of it with an apt of this test's own.
#
# usage: setup_test.sh SOURCE_DIR
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin"

program() {
    { echo '#!/bin/sh' && cat; } >"$work/bin/$1"
    chmod +x "$work/bin/$1"
}
program id <<<'echo 0'
program dpkg-query <<<'exit 1'
program apt-get <<EOT
echo "\$*" >>"$work/calls"
case "\$*" in
*update*)
    echo 'Get:1 http://deb.debian.org/debian bookworm InRelease [151 kB]'
    exit \${UPDATE:-0}
    ;;
*)
    echo '0 upgraded, 12 newly installed, 0 to remove and 3 not upgraded.'
    echo 'Need to get 94.3 MB of archives.'
    for i in 1 2 3 4 5 6 7 8 9 10 11 12; do
        echo "Get:\$i http://deb.debian.org/debian bookworm/main amd64 package\$i amd64 1.\$i [34 kB]"
    done
    for i in 1 2 3 4 5 6 7 8 9 10 11 12; do echo "Unpacking package\$i (1.\$i) ..."; done
    for i in 1 2 3 4 5 6 7 8 9 10 11 12; do echo "Setting up package\$i (1.\$i) ..."; done
    echo 'E: what apt says last'
    exit \${INSTALL:-0}
    ;;
esac
EOT

setup() { PATH=$work/bin:$PATH TMPDIR=$work "$source/tools/setup.sh" "$@" 2>&1; }

expect() {
    diff -u --label expected --label said "$work/expected" "$work/said" || { echo "FAILED: $1" >&2; exit 1; }
}

setup format >"$work/said"
cat >"$work/expected" <<'EOT'
setup: installing Debian packages: clang-format-14
setup: reading Debian's package lists
setup: 12 packages, 94.3 MB to fetch
setup: 10 of 12 fetched: package10
setup: 12 of 12 fetched: package12
setup: 10 of 12 unpacked: package10
setup: 12 of 12 unpacked: package12
setup: 10 of 12 installed: package10
setup: 12 of 12 installed: package12
setup: done
EOT
expect "what a set-up says"
[ -z "$(find "$work" -name 'vxsubtitle-setup*')" ] || { echo "FAILED: a log is left behind" >&2; exit 1; }

UPDATE=100 setup format >"$work/said"
grep -qx "setup: warning: 'apt-get update' failed; trying with the package lists at hand" "$work/said" &&
    [ "$(tail -n 1 "$work/said")" = "setup: done" ] || { cat "$work/said"; echo "FAILED: an update that fails" >&2; exit 1; }

rm "$work/calls"
if INSTALL=100 setup format >"$work/said"; then echo "FAILED: a set-up without packages ends well" >&2; exit 1; fi
grep -qx 'E: what apt says last' "$work/said" && grep -q "all of apt's output is in $work/vxsubtitle-setup" "$work/said" &&
    [ "$(grep -c install "$work/calls")" = 2 ] || { cat "$work/said"; echo "FAILED: what a failure says" >&2; exit 1; }
echo "setup: says what comes, what failed and where the rest is"
