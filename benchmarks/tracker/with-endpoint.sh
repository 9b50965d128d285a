#!/bin/bash
# SPDX-License-Identifier: MIT
# with-endpoint.sh FOLDER COMMAND...
# Serves the library that a console keeps below FOLDER over HTTP on this machine, as another machine would, and runs the
# command, in whose words "@" stands for the endpoint's address. Needs a session bus (dbus-run-session) and package tracker.
set -euo pipefail
folder=$1
shift
port=$(/usr/bin/python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
tracker3 endpoint -d "$folder/kelvo/tracker" -o nepomuk --http-port "$port" --loopback > /dev/null 2>&1 &
server=$!
trap 'kill "$server"' EXIT
until ss -ltn | grep -q ":$port "; do
    kill -0 "$server"
    sleep 0.05
done
"${@/#@/http://127.0.0.1:$port/sparql}"
