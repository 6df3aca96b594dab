#!/bin/bash
# usage: with_hub.sh MVHUB [HUB OPTION...] -- COMMAND [ARGUMENT...]
#
# Runs a command beside a hub of its own, on a free port, whose URL it finds in MV_SERVERPROXY_HUB.
# The hub is ended afterwards, by its process id. The result is the command's.
set -euo pipefail

hub=$1
shift
options=()
while [ "$1" != "--" ]; do
  options+=("$1")
  shift
done
shift

folder=$(mktemp -d)
coproc HUB { exec "$hub" --port 0 --quiet --state-dir "$folder/state" "${options[@]}" 2>&1; }
hub_id=$HUB_PID
exec {hub_output}<&"${HUB[0]}"

end_hub() {
  kill "$hub_id" || echo "with_hub.sh: the hub had ended before its time" >&2
  wait "$hub_id" || echo "with_hub.sh: the hub ended with status $?" >&2
  rm -rf "$folder"
}
trap end_hub EXIT

if ! read -r -t 20 line <&"$hub_output" || [[ $line != "mvhub listening on "* ]]; then
  echo "with_hub.sh: $hub did not get ready: ${line:-nothing written within 20 seconds}" >&2
  exit 1
fi

export MV_SERVERPROXY_HUB=${line#mvhub listening on }
export TEMP=$folder
unset http_proxy https_proxy all_proxy
"$@"
