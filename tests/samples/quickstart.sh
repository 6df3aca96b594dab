#!/bin/bash
# usage: quickstart.sh BUILD_DIR QUICKSTART_PAGE
#
# Does what the quick start says, in a home folder of its own: its files and commands are taken from
# the page as they stand. Only the build is the given one, and the hub has another port.
set -euo pipefail

build=$1
page=$2
here=$(cd "$(dirname "$0")" && pwd)
HOME=$(mktemp -d)
export HOME
trap 'rm -rf "$HOME"' EXIT

# block LANGUAGE NUMBER: a block of the page.
block() {
  awk -v "fence=\`\`\`$1" -v "number=$2" \
    '$0 == fence { inside = ++count == number; next } /^```/ { inside = 0 } inside' "$page" |
    sed "s#http://127.0.0.1:16064#$MV_SERVERPROXY_HUB#"
}

# says EXPECTED NUMBER: the commands of a block print this as their last line.
says() {
  local output
  block sh "$2" | sed 's/ *#.*//' >commands
  cat commands
  output=$(bash -eu commands | tail -n 1)
  [ "$output" = "$1" ] || { echo "prints '$output' instead of '$1'" >&2; exit 1; }
}

follow() {
  cd "$HOME"
  block cpp 1 >first.cpp
  block cmake 1 >CMakeLists.txt
  says "hello" 3
  says "hello from the server" 4
  says "hello from the server" 5
}
export -f block says follow
export page

cmake --install "$build" --prefix "$HOME/mv" >"$HOME/install.log"
"$here/../support/with_hub.sh" "$HOME/mv/bin/mvhub" -- bash -euc follow
