#!/bin/sh
# The committed character set tables are what tools/gen_charsets.py writes. Status 77: not tested.
if ! command -v python3 >/dev/null; then
    echo "SKIPPED: python3 is not installed"
    exit 77
fi
# -B: leaves nothing behind in the source tree
exec python3 -B "$(dirname "$0")/../tools/gen_charsets.py" --check
