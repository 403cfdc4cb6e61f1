#!/usr/bin/env bash
# One company's reports on two databases: paired, interleaved runs of the
# same commands on each, medians of the wall-clock times (the server's work
# is part of a report's cost, so the client's processor time alone does not
# tell).
#
#   bash bench/company_layouts.sh [--runs N] [--company CODE] URL_A URL_B
#
# e.g. URL_A a database holding one company of 5 000 employees alone
# (demo-db --companies 1 --employees 5000), URL_B the bureau database of
# 200 such companies (demo-db --companies 200 --employees 1000000
# --partition-by-company), or URL_B the coordinator of scripts/pg-shards.sh.
# Prints one line per report: rows, median on A, median on B (ms), B/A,
# each run a process of the tool with a new session (a cold start, which
# pays for reading the partitions' descriptions into the session); then
# "warm": the statements the report sends (--trace-sql) replayed by psql in
# one session on each database, the median of N passes after a first one,
# as the server times them (EXPLAIN ANALYZE: planning and execution).
# ORVALIS names the tool (default build/orvalis), PSQL the client (default
# PostgreSQL 15's). Not a test: asserts no time.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
ORVALIS=${ORVALIS:-$HERE/../build/orvalis}
PSQL=${PSQL:-/usr/lib/postgresql/15/bin/psql}
RUNS=7
COMPANY=ORV01
while [[ $# -gt 2 ]]; do
  case "$1" in
    --runs) RUNS=$2; shift 2 ;;
    --company) COMPANY=$2; shift 2 ;;
    *) echo "usage: $0 [--runs N] [--company CODE] URL_A URL_B" >&2; exit 2 ;;
  esac
done
[[ $# -eq 2 ]] || { echo "usage: $0 [--runs N] [--company CODE] URL_A URL_B" >&2; exit 2; }
A=$1
B=$2

REPORTS=(
  "extract ReportingData LOCATIONS L08 False"
  "extract SIR_HE SIR_DATA"
  "extract Addresses EMPLOYEE_ADDRESSES \"\" EMPADDRALL"
  "extract Absence LISTING START_DATE=01/04/2025 END_DATE=31/03/2026"
  "extract Establishment ESTABLISHMENT START_DATE=01/01/2025 END_DATE=31/12/2025"
  "query EMPADDRALL"
)

# Milliseconds of one run; the rows (output lines but the header) in $ROWS.
run() {
  local url=$1 command=$2 start end out
  start=$(date +%s%N)
  out=$(eval "\"$ORVALIS\" --db \"$url\" --company $COMPANY $command --format csv" 2>/dev/null | wc -l) || true
  end=$(date +%s%N)
  ROWS=$((out - 1))
  echo $(((end - start) / 1000000))
}

median() { sort -n | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }

printf "%-66s %8s %10s %10s %6s\n" report rows "A ms" "B ms" "B/A"
for command in "${REPORTS[@]}"; do
  ta=() tb=()
  run "$A" "$command" >/dev/null  # warm both caches
  run "$B" "$command" >/dev/null
  for ((i = 0; i < RUNS; i++)); do
    ta+=("$(run "$A" "$command")")
    rows_a=$ROWS
    tb+=("$(run "$B" "$command")")
  done
  ma=$(printf "%s\n" "${ta[@]}" | median)
  mb=$(printf "%s\n" "${tb[@]}" | median)
  printf "%-66s %8s %10s %10s %6.2f\n" "$command" "$rows_a" "$ma" "$mb" "$(echo "$mb / $ma" | bc -l)"
done

# Warm sessions: the same statements, N passes in one session each, timed
# by the server (planning and execution, EXPLAIN ANALYZE), which the load
# of a shared machine disturbs less than the client's clock.
TMP=$(mktemp -d)
trap 'rm -rf "$TMP"' EXIT
pass_times() {
  local url=$1 file=$2
  {
    for ((i = 0; i <= RUNS; i++)); do
      echo "\\echo pass $i"
      sed 's/^/explain (analyze, timing off) /' "$file"
    done
  } | "$PSQL" "$url" -X -q -At 2>&1 | awk '/^(Planning|Execution) Time:/ {t[p] += $3} /^pass/ {p++} END {for (i = 2; i <= p; i++) print t[i]}'
}
echo
printf "%-66s %8s %10s %10s %6s\n" "warm session" statements "A ms" "B ms" "B/A"
for command in "${REPORTS[@]}"; do
  rm -f "$TMP/trace"
  eval "\"$ORVALIS\" --db \"$B\" --company $COMPANY --trace-sql \"$TMP/trace\" $command --format csv" >/dev/null 2>&1 || true
  cut -f2- "$TMP/trace" | sed 's/$/;/' >"$TMP/statements"
  ma=$(pass_times "$A" "$TMP/statements" | median)
  mb=$(pass_times "$B" "$TMP/statements" | median)
  printf "%-66s %8s %10.0f %10.0f %6.2f\n" "$command" "$(wc -l <"$TMP/statements")" "$ma" "$mb" "$(echo "$mb / $ma" | bc -l)"
done
