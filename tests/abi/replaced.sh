#!/usr/bin/env bash
# Runs a program whose proxy library is replaced and expects the replacement's answer.
#
#   replaced.sh PROGRAM own               the program defines the eight functions itself
#   replaced.sh PROGRAM preload LIBRARY   LD_PRELOAD
#   replaced.sh PROGRAM path FOLDER       a library of the same name, found first
set -euo pipefail

program=$1
case $2 in
    own) ;;
    preload) export LD_PRELOAD=$3 ;;
    path) export LD_LIBRARY_PATH=$3 ;;
    *)
        printf 'unknown way: %s\n' "$2" >&2
        exit 2
        ;;
esac

temp=$(mktemp -d)
trap 'rm -rf "$temp"' EXIT
answer=$(TEMP=$temp "$program")
expected="0 answered by the replacement"
if [ "$answer" != "$expected" ]; then
    printf 'expected: %s\ncame:     %s\n' "$expected" "$answer" >&2
    exit 1
fi
