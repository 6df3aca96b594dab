#!/bin/sh
# usage: build_and_spin.sh <project folder> <build folder> <static library> <compiler> <options>
# Builds the source that holds the loop anew, links the rest of the library to it, and runs spin.cpp,
# which says whether the wait was a real one.
set -eu

project=$1
build=$2
library=$3
compiler=$4
options=$5

rm -rf "$build"
mkdir -p "$build"
cd "$build"
for source in client/RequestSending.cpp tests/spin/spin.cpp; do
    $compiler $options -std=c++17 -fPIE -I "$project/include" -I "$project" -c "$project/$source"
done
$compiler $options -pie RequestSending.o spin.o "$library" -licuuc -lz -o spin
./spin
