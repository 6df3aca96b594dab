#!/usr/bin/env bash
# Compares what a library exports with a committed list, byte for byte.
#
#   exports.sh LIBRARY LIST            fails and shows the difference
#   exports.sh --update LIBRARY LIST   writes the list anew
set -euo pipefail
export LC_ALL=C

update=false
if [ "$1" = --update ]; then
    update=true
    shift
fi
library=$1
list=$2

# Kind and name, a line each. Weak and strong definitions are told apart.
exported() { nm -D --defined-only --format=posix "$library" | awk '{ print $2, $1 }' | sort -u; }

if $update; then
    exported >"$list"
elif ! difference=$(diff -u "$list" <(exported)); then
    printf '%s\n' "$difference" | c++filt >&2
    printf 'The exports differ from %s; docs/ABI.md says what that means.\n' "$list" >&2
    exit 1
fi
