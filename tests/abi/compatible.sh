#!/usr/bin/env bash
# Compares a library's binary interface with its committed baseline.
#
#   compatible.sh LIBRARY BASELINE                    fails on an incompatible change, and on any
#                                                     change that the baseline does not know
#   compatible.sh --update LIBRARY BASELINE HEADERS   writes the baseline anew
set -euo pipefail

update=false
if [ "$1" = --update ]; then
    update=true
    shift
fi
library=$1
baseline=$2

if $update; then
    # A path with ".." in it names no header of the debug information: every type would be described.
    abidw --exported-interfaces-only --headers-dir "$(realpath "$3")" --drop-private-types --drop-undefined-syms \
        --no-elf-needed --no-parameter-names --no-show-locs --no-comp-dir-path --no-corpus-path \
        --out-file "$baseline" "$library"
    exit
fi

# The baseline holds no private types, and no places in files either: --drop-private-types would take
# every type in it for private, and see no change.
# Bits of the exit status: 1 error, 2 usage, 4 change, 8 incompatible change.
status=0
report=$(abidiff --exported-interfaces-only --no-show-locs "$baseline" "$library") || status=$?
if [ "$status" -ne 0 ]; then
    printf '%s\n' "$report" >&2
    if [ $((status & 8)) -ne 0 ]; then
        printf 'Incompatible: this needs a new major version.\n' >&2
    else
        printf 'Changed: see docs/ABI.md, then write the baseline anew.\n' >&2
    fi
    exit 1
fi
