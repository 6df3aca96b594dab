#!/usr/bin/env bash
# Changes one thing at a time in a copy of a baseline, as if the library had been another before, and
# expects the comparison to notice.
#
#   noticed.sh LIBRARY BASELINE
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
library=$1
baseline=$2
other=$(mktemp)
trap 'rm -f "$other"' EXIT

# What is changed, and how; a newline belongs to the text that is searched.
changes=(
    "size of a class" "s/(class-decl name='MSPSession' size-in-bits=')[0-9]+/\11024/"
    "place of a member" "s/(layout-offset-in-bits=')[0-9]+('>\n *<var-decl name='m_index')/\1512\2/"
    "base of a class" "s/(name='MSPRuntimeException'[^>]*>)\n *<base-class [^>]*>/\1/"
    "value of an enumerator" "s/(enumerator name='LevelDebug' value=')[0-9]+/\17/"
    "function that is gone" "s/MSPSession/MSPSessionOfOld/g"
)
unnoticed=0
for ((i = 0; i < ${#changes[@]}; i += 2)); do
    sed -zE "${changes[i + 1]}" "$baseline" >"$other"
    if cmp -s "$baseline" "$other"; then
        printf 'nothing to change: %s\n' "${changes[i]}" >&2
        unnoticed=1
    elif "$here/compatible.sh" "$library" "$other" 2>/dev/null; then
        printf 'not noticed: %s\n' "${changes[i]}" >&2
        unnoticed=1
    else
        printf 'noticed: %s\n' "${changes[i]}"
    fi
done
exit "$unnoticed"
