#!/usr/bin/env bash
# A throwaway PostgreSQL 15 server for the test suite.
#
#   scripts/pg-cluster.sh start DIR   create a cluster in DIR, start it on
#                                     127.0.0.1 (a free port) and on a Unix
#                                     socket in DIR, trust authentication,
#                                     database orvalis_test; prints the
#                                     export lines for ORVALIS_TEST_PG_URL
#                                     and ORVALIS_TEST_ODBC on stdout.
#   scripts/pg-cluster.sh stop DIR    stop the server and remove DIR.
#
# Typical use:  eval "$(scripts/pg-cluster.sh start "$dir")"
#               trap 'scripts/pg-cluster.sh stop "$dir"' EXIT
#
# Only the export lines go to stdout; progress and errors go to stderr.
# "start" on a DIR whose server is already running prints the same lines
# again; "stop" on a missing DIR does nothing. The server refuses to run as
# root, so as root DIR is handed to the postgres user and the server programs
# run through runuser. The cluster is tuned for throwaway use (no fsync).
set -euo pipefail

PG_BIN=${PG_BIN:-/usr/lib/postgresql/15/bin}
ODBC_DIR=${ORVALIS_ODBC_DRIVER_DIR:-/usr/lib/x86_64-linux-gnu/odbc}
DB_NAME=orvalis_test

die() {
  echo "pg-cluster: $*" >&2
  exit 1
}

usage() {
  echo "usage: $0 start|stop DIR" >&2
  exit 2
}

# Runs a server program as the cluster's owner.
as_owner() {
  if [[ $(id -u) -eq 0 ]]; then
    runuser -u postgres -- "$@"
  else
    "$@"
  fi
}

server_running() {
  [[ -f "$DIR/data/postmaster.pid" ]] && as_owner "$PG_BIN/pg_ctl" -D "$DIR/data" status >/dev/null 2>&1
}

# A TCP port on 127.0.0.1 that nothing listens on (the server itself is the
# final judge: start retries with another port when the bind fails).
free_port() {
  local port
  for _ in $(seq 1 50); do
    port=$((20000 + RANDOM % 40000))
    if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
      echo "$port"
      return 0
    fi
  done
  return 1
}

odbc_driver() {
  local so
  for so in "$ODBC_DIR/psqlodbcw.so" "$ODBC_DIR/psqlodbca.so"; do
    if [[ -f "$so" ]]; then
      echo "$so"
      return 0
    fi
  done
  return 1
}

print_exports() {
  local port driver odbc
  port=$(cat "$DIR/port")
  echo "export ORVALIS_TEST_PG_URL=postgresql://postgres@127.0.0.1:$port/$DB_NAME"
  if driver=$(odbc_driver); then
    # The options make psqlODBC describe columns as the native driver does
    # (see data/drivers/odbc_connection.h): varchar(n) and char(n) keep their
    # length however long, text is a long varchar, booleans are SQL_BIT.
    odbc="odbc:Driver=$driver;Server=127.0.0.1;Port=$port;Database=$DB_NAME;Uid=postgres;Pwd=;"
    odbc+="MaxVarcharSize=10485760;MaxLongVarcharSize=1073741823;TextAsLongVarchar=1;BoolsAsChar=0"
    echo "export ORVALIS_TEST_ODBC='$odbc'"
  else
    echo "pg-cluster: no psqlODBC driver under $ODBC_DIR; ORVALIS_TEST_ODBC not set" >&2
  fi
}

start() {
  [[ -x "$PG_BIN/initdb" ]] || die "PostgreSQL server programs not found in $PG_BIN"
  if server_running && [[ -f "$DIR/port" ]]; then
    print_exports
    return 0
  fi
  mkdir -p "$DIR"
  DIR=$(cd "$DIR" && pwd)
  if [[ $(id -u) -eq 0 ]]; then
    id postgres >/dev/null 2>&1 || die "running as root but there is no postgres user to own the server"
    chown postgres: "$DIR"
  fi
  if [[ ! -f "$DIR/data/PG_VERSION" ]]; then
    rm -rf "$DIR/data"
    as_owner "$PG_BIN/initdb" -D "$DIR/data" -U postgres -A trust -E UTF8 --locale=C.UTF-8 --no-sync \
      >"$DIR/initdb.log" 2>&1 || {
      cat "$DIR/initdb.log" >&2
      die "initdb failed in $DIR/data"
    }
  fi

  local port started=no
  for _ in 1 2 3 4 5; do
    port=$(free_port) || die "no free TCP port found on 127.0.0.1"
    if as_owner "$PG_BIN/pg_ctl" -D "$DIR/data" -l "$DIR/server.log" -w -t 60 \
      -o "-p $port -k $DIR -c listen_addresses=127.0.0.1 -c fsync=off -c synchronous_commit=off -c full_page_writes=off -c max_connections=200" \
      start >/dev/null 2>&1; then
      started=yes
      break
    fi
    # A port taken between the probe and the bind: try another one.
    grep -q "could not bind\|Address already in use" "$DIR/server.log" 2>/dev/null || break
  done
  if [[ $started != yes ]]; then
    tail -n 20 "$DIR/server.log" >&2 2>/dev/null || true
    die "the PostgreSQL server in $DIR did not start (log: $DIR/server.log)"
  fi
  echo "$port" >"$DIR/port"

  local ready=no
  for _ in $(seq 1 60); do
    if "$PG_BIN/pg_isready" -q -h 127.0.0.1 -p "$port"; then
      ready=yes
      break
    fi
    sleep 0.5
  done
  [[ $ready == yes ]] || die "the PostgreSQL server on port $port did not become ready"

  if ! "$PG_BIN/psql" -h 127.0.0.1 -p "$port" -U postgres -d postgres -tAq \
    -c "select 1 from pg_database where datname = '$DB_NAME'" | grep -q 1; then
    "$PG_BIN/createdb" -h 127.0.0.1 -p "$port" -U postgres "$DB_NAME" || die "could not create database $DB_NAME"
  fi
  echo "pg-cluster: PostgreSQL listening on 127.0.0.1:$port and in $DIR" >&2
  print_exports
}

stop() {
  [[ -d "$DIR" ]] || return 0
  if [[ -f "$DIR/data/postmaster.pid" ]]; then
    as_owner "$PG_BIN/pg_ctl" -D "$DIR/data" -m fast -w -t 60 stop >/dev/null 2>&1 ||
      as_owner "$PG_BIN/pg_ctl" -D "$DIR/data" -m immediate -w stop >/dev/null 2>&1 || true
  fi
  rm -rf "$DIR"
}

[[ $# -eq 2 ]] || usage
DIR=$2
[[ -n "$DIR" && "$DIR" != "/" ]] || die "refusing to use '$DIR' as the cluster directory"
case "$1" in
  start) start ;;
  stop) stop ;;
  *) usage ;;
esac
