#!/usr/bin/env bash
# Runs exchanges whose log cannot be opened or written, by a tracer that answers for the kernel, and
# expects the exchanges unharmed.
#
#   full_disk.sh PROGRAM
set -euo pipefail

program=$1
TEMP=$(mktemp -d)
trap 'rm -rf "$TEMP"' EXIT
export TEMP MV_CPPBINDING_LOG_LEVEL=DEBUG
wanted=$'answer\nanswer\nanswer'

# run INJECTION: what the program writes; only calls on its log file are answered otherwise. With -D
# the program keeps the number of the process that the file is named after.
run() {
    # shellcheck disable=SC2016  # the inner shell expands it
    bash -c 'exec strace -D -qq -o "$TEMP/trace" -P "$TEMP/CppBinding_$$_Morvenn.log" \
        -P "$TEMP//CppBinding_$$_Morvenn.log" -e "$1" "$2"' run "inject=$1" "$program"
}

# expect WHAT CAME: the exchanges came out as ever, and something was injected.
expect() {
    if [ "$2" != "$wanted" ]; then
        printf '%s: expected\n%s\ncame\n%s\n' "$1" "$wanted" "$2" >&2
        exit 1
    fi
    if ! grep -q INJECTED "$TEMP/trace"; then
        printf '%s: nothing was injected\n' "$1" >&2
        exit 1
    fi
    rm -f "$TEMP"/*
}

for error in ENOSPC EIO EDQUOT; do
    for first in 1 2 5; do
        expect "write fails with $error from number $first on" \
            "$(run "write:error=$error:when=$first+")"
    done
done

for error in ENOSPC EMFILE EACCES EROFS; do
    came=$(run "openat:error=$error")
    notice="Could not open the log file:-$TEMP//CppBinding_"
    case $came in
        "$notice"*) ;;
        *)
            printf 'opening fails with %s: no notice in\n%s\n' "$error" "$came" >&2
            exit 1
            ;;
    esac
    expect "opening fails with $error" "${came/#*will be disabled/}"
done
