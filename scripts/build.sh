#!/usr/bin/env bash
# Configures and builds everything (library, tool, tests, benchmarks) into
# build/ (or $ORVALIS_BUILD_DIR). Incremental after the first run.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ORVALIS_BUILD_DIR:-$root/build}"
type="${ORVALIS_BUILD_TYPE:-RelWithDebInfo}"

if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE="$type" >/dev/null
fi
cmake --build "$build" -j"$(nproc)" "$@"
