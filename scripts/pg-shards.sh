#!/usr/bin/env bash
# A coordinator and two company servers (PostgreSQL 15) on loopback, for the
# layout that spreads a bureau's companies over servers.
#
#   scripts/pg-shards.sh start DIR   start three throwaway servers
#                                    (scripts/pg-cluster.sh) in
#                                    DIR/coordinator, DIR/company1 and
#                                    DIR/company2; prints the export lines of
#                                    ORVALIS_COORDINATOR_URL,
#                                    ORVALIS_COMPANY1_URL and
#                                    ORVALIS_COMPANY2_URL on stdout.
#   scripts/pg-shards.sh demo DIR [DEMO-DB OPTIONS]
#                                    builds the demo database partitioned by
#                                    company on the coordinator (orvalis
#                                    demo-db --partition-by-company --replace
#                                    OPTIONS), then moves the companies'
#                                    partitions to the company servers in
#                                    turn (orvalis move-company): ORV01 to
#                                    company1, ORV02 to company2, ORV03 to
#                                    company1, ...
#   scripts/pg-shards.sh stop DIR    stop the three servers and remove DIR.
#
# Typical use:  eval "$(scripts/pg-shards.sh start "$dir")"
#               scripts/pg-shards.sh demo "$dir" --employees 5000
#               build/orvalis --db "$ORVALIS_COORDINATOR_URL" extract ...
#
# The coordinator keeps the administration tables (users, stored queries,
# control parameters, notes, the data dictionary); each company table is
# partitioned by VARIATION_ID there, and a moved company's partitions are
# foreign tables (postgres_fdw) on its company server. The component
# connects to the coordinator as to any database. ORVALIS names the tool
# (default: build/orvalis beside this script). Only the export lines go to
# stdout; progress and errors go to stderr.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
PG_BIN=${PG_BIN:-/usr/lib/postgresql/15/bin}
ORVALIS=${ORVALIS:-$HERE/../build/orvalis}
SERVERS=(coordinator company1 company2)

die() {
  echo "pg-shards: $*" >&2
  exit 1
}

usage() {
  echo "usage: $0 start|stop DIR | demo DIR [DEMO-DB OPTIONS]" >&2
  exit 2
}

# The URL a pg-cluster.sh start line exports for one server.
server_url() {
  local lines
  lines=$(bash "$HERE/pg-cluster.sh" start "$DIR/$1") || die "the $1 server did not start"
  sed -n "s/^export ORVALIS_TEST_PG_URL=//p" <<<"$lines"
}

start() {
  [[ -x "$PG_BIN/initdb" ]] || die "PostgreSQL server programs not found in $PG_BIN"
  compgen -G "/usr/share/postgresql/*/extension/postgres_fdw.control" >/dev/null ||
    die "postgres_fdw is not installed (Debian ships it in postgresql-15)"
  mkdir -p "$DIR"
  local name url
  for name in "${SERVERS[@]}"; do
    url=$(server_url "$name")
    [[ -n "$url" ]] || die "no URL for the $name server"
    case "$name" in
      coordinator) echo "export ORVALIS_COORDINATOR_URL=$url" ;;
      company1) echo "export ORVALIS_COMPANY1_URL=$url" ;;
      company2) echo "export ORVALIS_COMPANY2_URL=$url" ;;
    esac
  done
}

demo() {
  [[ -x "$ORVALIS" ]] || die "the orvalis tool is not built ($ORVALIS)"
  local coordinator company1 company2
  coordinator=$(server_url coordinator)
  company1=$(server_url company1)
  company2=$(server_url company2)
  "$ORVALIS" --db "$coordinator" demo-db --partition-by-company --replace --quiet "$@" >&2
  # The companies: the partitions of PNLEMPMST but the default one.
  local codes
  codes=$("$PG_BIN/psql" "$coordinator" -tAq -c \
    "select substr(c.relname, 11) from pg_inherits i join pg_class c on c.oid = i.inhrelid
     where i.inhparent = 'pnlempmst'::regclass and c.relkind = 'r'
       and c.relname <> 'pnlempmst_without_company' order by 1")
  local n=0 code target
  while IFS= read -r code; do
    [[ -n "$code" ]] || continue
    if ((n % 2 == 0)); then target=$company1; else target=$company2; fi
    "$ORVALIS" --db "$coordinator" move-company "$code" --to "$target" >&2
    n=$((n + 1))
  done <<<"$codes"
}

stop() {
  local name
  for name in "${SERVERS[@]}"; do bash "$HERE/pg-cluster.sh" stop "$DIR/$name"; done
  rm -rf "$DIR"
}

[[ $# -ge 2 ]] || usage
DIR=$2
[[ -n "$DIR" && "$DIR" != "/" ]] || die "refusing to use '$DIR' as the servers' directory"
command=$1
shift 2
case "$command" in
  start) [[ $# -eq 0 ]] || usage; start ;;
  stop) [[ $# -eq 0 ]] || usage; stop ;;
  demo) demo "$@" ;;
  *) usage ;;
esac
