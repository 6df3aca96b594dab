#!/bin/bash
# usage: embedded.sh WAY SOURCE_DIR MVHUB [CMAKE OPTION...]
#
# Builds an application that contains the binding, by add_subdirectory or by FetchContent, and runs
# it beside a hub.
set -euo pipefail

way=$1
source=$2
hub=$3
shift 3
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake -S "$here/embedded" -B "$work" -G Ninja "-DMV_WAY=$way" "-DMV_SOURCE=$source" "$@" \
  >"$work/log" || { cat "$work/log"; exit 1; }
cmake --build "$work" -j2 --target application >"$work/log" || { cat "$work/log"; exit 1; }
"$here/../support/with_hub.sh" "$hub" -- bash -euc '"$0" "$MV_SERVERPROXY_HUB"' "$work/application"
