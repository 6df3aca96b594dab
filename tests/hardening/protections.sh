#!/usr/bin/env bash
# Checks the protections of one library or program in its ELF headers and symbols.
#
#   protections.sh FILE
set -euo pipefail

file=$1
missing=()

# expect WHAT PATTERN TEXT: the text has a line that matches.
expect() { grep -qE "$2" <<<"$3" || missing+=("$1"); }

segments=$(readelf -lW "$file")
dynamic=$(readelf -dW "$file")
symbols=$(readelf --dyn-syms -W "$file")

expect "read-only relocations" GNU_RELRO "$segments"
expect "all symbols bound at start" 'BIND_NOW|FLAGS_1.*NOW' "$dynamic"
expect "stack without execution" 'GNU_STACK.* RW ' "$segments"
expect "position-independent code" 'Elf file type is DYN' "$segments"
expect "stack protector" __stack_chk_fail "$symbols"
if [ "$(uname -m)" = x86_64 ]; then
    # The mark in the notes needs start-up code that was built so, too; the instruction does not.
    expect "control-flow protection" endbr64 "$(objdump -d --no-show-raw-insn "$file" | grep -m 1 endbr64)"
fi
if grep -q TEXTREL <<<"$dynamic"; then missing+=("no relocations in code"); fi
if grep -qE 'LOAD.* RWE ' <<<"$segments"; then missing+=("no segment both writable and executable"); fi

if [ "${#missing[@]}" -ne 0 ]; then
    printf '%s lacks:\n' "$file" >&2
    printf '  %s\n' "${missing[@]}" >&2
    exit 1
fi

# A second opinion where Debian's own checker is at hand. It cannot see fortified calls in a library
# that has none to protect, nor the mark in the notes: tests/hardening/flags.py checks those flags.
if command -v hardening-check >/dev/null; then
    hardening-check --quiet --nofortify --nocfprotection "$file"
fi
