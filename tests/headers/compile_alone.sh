#!/bin/sh
# usage: compile_alone.sh <include folder> <header...> -- <compiler> <options...>
# Compiles each header as the only one included, and twice, so that it has all it needs and a guard.
set -eu

folder=$1
shift
headers=
while [ "$1" != "--" ]; do
    headers="$headers $1"
    shift
done
shift

failed=0
for header in $headers; do
    include="#include \"$header\""
    if ! printf '%s\n' "$include" "$include" | "$@" -fsyntax-only -I "$folder" -; then
        echo "does not compile by itself: $header ($*)"
        failed=1
    fi
done
exit $failed
