#!/usr/bin/env bash
# Prints the project's library dependency graph, one "library -> library"
# line per link, from CMake's own graph of a configured build folder
# (default build/, or $ORVALIS_BUILD_DIR). Third-party libraries are left
# out; the tool and the test programs are shown.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ORVALIS_BUILD_DIR:-$root/build}"
dot="$(mktemp -d)/deps.dot"
trap 'rm -rf "$(dirname "$dot")"' EXIT
cmake -S "$root" -B "$build" --graphviz="$dot" >/dev/null
awk '
  match($0, /"node[0-9]+" \[ label = "[^"]+"/) {
    split(substr($0, RSTART, RLENGTH), p, "\""); name[p[2]] = p[4]
  }
  match($0, /"node[0-9]+" -> "node[0-9]+"/) {
    split(substr($0, RSTART, RLENGTH), p, "\""); from = name[p[2]]; to = name[p[4]]
    if (from ~ /^(orvalis|test_)/ && to ~ /^orvalis/) print from " -> " to
  }' "$dot" | sort -u
