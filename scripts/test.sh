#!/usr/bin/env bash
# Runs every test: installs what is missing, builds, starts a throwaway
# PostgreSQL 15 server (the PostgreSQL and ODBC tests run against it), runs
# the whole suite through CTest and stops the server again. Fails when the
# server cannot start: no test is skipped silently.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ORVALIS_BUILD_DIR:-$root/build}"

bash "$root/scripts/install-deps.sh"
bash "$root/scripts/build.sh"

pgdir="$(mktemp -d /tmp/orvalis-pg.XXXXXX)"
stop_server() { bash "$root/scripts/pg-cluster.sh" stop "$pgdir" >/dev/null 2>&1 || true; }
trap stop_server EXIT
# A failed start must stop the run: capture first, so set -e sees it.
exports="$(bash "$root/scripts/pg-cluster.sh" start "$pgdir")"
eval "$exports"
export ORVALIS_TEST_PG_URL ORVALIS_TEST_ODBC

cd "$build"
ctest --output-on-failure -j"$(nproc)" "$@"
