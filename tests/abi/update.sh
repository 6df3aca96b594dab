#!/usr/bin/env bash
# Writes the baselines anew from a build folder of the preset "dev": update.sh build/dev
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1

for pair in cmake/library/libMvServerCppBinding.so:MvServerCppBinding \
    proxy/libMvServerBindingv16064.so:MvServerBinding; do
    library=$build/${pair%%:*}
    baseline=$here/baseline/${pair##*:}
    "$here/exports.sh" --update "$library" "$baseline.symbols"
    "$here/compatible.sh" --update "$library" "$baseline.abi" "$here/../../include"
done
