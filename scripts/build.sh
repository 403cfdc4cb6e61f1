#!/usr/bin/env bash
# Configures and builds everything (library, tool, tests, benchmarks) into
# build/ (or $ORVALIS_BUILD_DIR). Incremental after the first run. Warnings
# fail the build here (ORVALIS_WERROR, on unless $ORVALIS_WERROR says OFF);
# a plain cmake build of the project only reports them.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ORVALIS_BUILD_DIR:-$root/build}"
type="${ORVALIS_BUILD_TYPE:-RelWithDebInfo}"
werror="${ORVALIS_WERROR:-ON}"

if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE="$type" -DORVALIS_WERROR="$werror" >/dev/null
elif ! grep -q "^ORVALIS_WERROR:BOOL=$werror\$" "$build/CMakeCache.txt"; then
  cmake "$build" -DORVALIS_WERROR="$werror" >/dev/null
fi
cmake --build "$build" -j"$(nproc)" "$@"
