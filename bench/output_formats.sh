#!/usr/bin/env bash
# Whole-command processor time of reports written as CSV and as XLSX.
#
#   bench/output_formats.sh DATABASE-URL [RUNS]
#
# Each case runs RUNS times (default 5) in each format, the formats taking
# turns, with --out into a scratch folder; the figure is the median of the
# command's user + system time (/usr/bin/time), so that a busy machine
# changes it little. The cases, on the 100 000-employee demo database
# (orvalis demo-db --employees 100000 --seed 1 --as-of 01/11/2026):
#   listing    extract Absence LISTING over seven months: 101 503 rows x 31
#              fields, texts, dates and numbers; the report computes for
#              about a second before it writes
#   addresses  extract Addresses EMPADDRALL: 50 000 rows x 53 fields,
#              nearly all texts
#   query      query NOWHERE: 100 000 rows x 3 short fields; the writing is
#              nearly all of the command
# ORVALIS_CLI names the tool (default build/orvalis); ORVALIS_OUTPUT_CASES
# picks cases ("listing query").
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
db="${1:?usage: output_formats.sh DATABASE-URL [RUNS]}"
runs="${2:-5}"
cli="${ORVALIS_CLI:-$root/build/orvalis}"
cases="${ORVALIS_OUTPUT_CASES:-listing addresses query}"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

args_of() {
  case "$1" in
    listing) echo "extract Absence LISTING START_DATE=01/09/2025 END_DATE=31/03/2026" ;;
    addresses) echo "extract Addresses EMPLOYEE_ADDRESSES '' EMPADDRALL" ;;
    query) echo "query NOWHERE" ;;
    *) echo "unknown case $1" >&2; exit 2 ;;
  esac
}

median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

printf '%-10s %6s %10s %10s %7s\n' case rows csv_cpu_s xlsx_cpu_s ratio
for c in $cases; do
  args="$(args_of "$c")"
  : >"$scratch/csv.times"
  : >"$scratch/xlsx.times"
  for ((i = 0; i < runs; i++)); do
    for f in csv xlsx; do
      eval "/usr/bin/time -f '%U %S' -o '$scratch/t' '$cli' --db '$db' --work-dir '$scratch' $args --format $f --out '$scratch/out.$f'"
      awk '{ print $1 + $2 }' "$scratch/t" >>"$scratch/$f.times"
    done
  done
  rows=$(($(wc -l <"$scratch/out.csv") - 1))
  csv=$(median <"$scratch/csv.times")
  xlsx=$(median <"$scratch/xlsx.times")
  printf '%-10s %6d %10.2f %10.2f %7.2f\n' "$c" "$rows" "$csv" "$xlsx" "$(awk -v a="$xlsx" -v b="$csv" 'BEGIN { print a / b }')"
done
