#!/bin/bash
# usage: installed.sh BUILD_DIR VERSION
#
# Installs the build into a folder, moves that folder elsewhere, and uses only what is there: the
# applications of consumer/ through CMake and through pkg-config, linked with the shared and with
# the static library, as C++17, C++20 and C99, and one with the test kit. Each then runs against the
# installed hub.
set -euo pipefail

build=$1
version=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >"$work/install.log"
mkdir "$work/else where"
mv "$work/first" "$work/else where/moved"
prefix="$work/else where/moved"

if grep -rIl --exclude-dir=share -e "$work/first" -e "$build" "$prefix"; then
  echo "the files above name the folder of the build or of the first installation" >&2
  exit 1
fi

echo "== CMake"
cmake -S "$here/consumer" -B "$work/consumer" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  "-DCMAKE_PREFIX_PATH=$prefix" "-DMV_EXPECTED_VERSION=$version" >"$work/configure.log" ||
  { cat "$work/configure.log"; exit 1; }
cmake --build "$work/consumer" -j2 >"$work/build.log" || { cat "$work/build.log"; exit 1; }

echo "== pkg-config"
export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name mvservercppbinding.pc)")
test "$(pkg-config --modversion mvservercppbinding)" = "$version"

# compile NAME COMPILER PACKAGE [FLAG...]: the flags of pkg-config, split as a shell would.
compile() {
  local name=$1 compiler=$2 package=$3 source=exchange.cpp flags
  shift 3
  [ "$compiler" = gcc ] && source=one_call.c
  flags=$(pkg-config --cflags --libs "$@" "$package")
  eval "set -- $flags"
  "$compiler" -Wall -Wextra -Wpedantic -Werror "-std=${name##*-}" "$here/consumer/$source" \
    -o "$work/consumer/pkg-config-$name" "$@"
}

for standard in c++17 c++20; do
  compile "shared-$standard" g++ mvservercppbinding &
  compile "static-$standard" g++ mvservercppbinding-static &
  wait %1 && wait %2
done
compile "shared-c99" gcc mvservercppbinding
compile "private-c99" gcc mvservercppbinding --static
compile "static-c99" gcc mvservercppbinding-static

flags=$(pkg-config --cflags --libs mvservercppbinding-testkit)
eval "set -- $flags"
g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror "$here/embedded/scripted.cpp" \
  -o "$work/consumer/testkit" "$@"

echo "== run"
libraries=$(dirname "$PKG_CONFIG_PATH")
run_all() {
  local program
  for program in "$1"/cmake-* "$1"/pkg-config-*; do
    echo -n "$(basename "$program"): "
    "$program" "$MV_SERVERPROXY_HUB"
  done
}
export -f run_all

for program in "$work"/consumer/*-static-*; do
  if objdump -p "$program" | grep -q 'NEEDED.*libMvServerCppBinding'; then
    echo "$program needs the shared library although it was linked with the archive" >&2
    exit 1
  fi
done
export LD_LIBRARY_PATH=$libraries
"$work/consumer/testkit"
"$here/../support/with_hub.sh" "$(cat "$work/consumer/mvhub.path")" -- \
  bash -euc 'run_all "$0"' "$work/consumer"

echo "== tools without LD_LIBRARY_PATH"
unset LD_LIBRARY_PATH
"$prefix/bin/mvhub" --version
[ ! -e "$prefix/bin/mvserver" ] || "$prefix/bin/mvserver" --version
