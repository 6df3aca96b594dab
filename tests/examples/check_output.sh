#!/bin/bash
# usage: check_output.sh EXPECTED_FILE STATUS COMMAND [ARGUMENT...]
#
# Runs a command and compares what it prints, byte for byte, and how it ends. In the arguments,
# @HUB@ stands for the hub's URL and @FOLDER@ for a folder that is removed afterwards.
set -euo pipefail

expected=$1
wanted=$2
shift 2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

arguments=()
for argument in "$@"; do
  argument=${argument//@HUB@/${MV_SERVERPROXY_HUB:-}}
  arguments+=("${argument//@FOLDER@/$folder}")
done

status=0
"${arguments[@]}" >"$folder/output" || status=$?
diff -u "$expected" "$folder/output"
if [ "$status" -ne "$wanted" ]; then
  echo "ended with status $status instead of $wanted" >&2
  exit 1
fi
