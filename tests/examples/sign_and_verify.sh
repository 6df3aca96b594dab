#!/bin/bash
# usage: sign_and_verify.sh SIGN_BATCH: signs, then has OpenSSL check every signature.
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

"$1" "$folder"
for item in 1 2 3; do
  openssl cms -verify -binary -inform DER -in "$folder/$item.p7s" -content "$folder/$item.txt" \
    -CAfile "$TEMP/state/ca.pem" -purpose any -out "$folder/$item.out"
  cmp "$folder/$item.txt" "$folder/$item.out"
done
echo "tampered" >"$folder/1.txt"
if openssl cms -verify -binary -inform DER -in "$folder/1.p7s" -content "$folder/1.txt" \
  -CAfile "$TEMP/state/ca.pem" -purpose any -out "$folder/1.out" 2>"$folder/errors"; then
  echo "a changed item still verifies" >&2
  exit 1
fi
