#!/usr/bin/env bash
# Times each read-only report and each stored query of the demo database
# against the engine's own client running the same statements.
#
#   bash bench/compare.sh [--employees N] [--db URL] [--runs N] [--only REGEX]
#                         [--work-dir DIR]
#
# --employees N   size of the demo database built when --db is not given
#                 (default 100000; built once under the work folder with
#                 seed 1, 2 companies, as of 01/11/2026, then reused)
# --db URL        sqlite:PATH or postgresql://...; a database without a
#                 complete demo is filled first (demo-db --if-missing)
# --runs N        timed runs of each side (default 5)
# --only REGEX    only the reports whose label matches (grep -E)
# --work-dir DIR  work folder (default build/bench-compare)
# --tool PATH     time this build of the tool as it is (e.g. a copy kept
#                 from before a change); nothing is built
#
# For every report the tool runs once with --trace-sql (untimed; it also
# warms the file cache), and the statements it sent become the client's
# script: `sqlite3` for SQLite (with the lock wait and page-cache settings
# the tool's connection makes), `psql` for PostgreSQL. Then, for each run, every report
# runs on both sides back to back, the side going first alternating from
# run to run. Both sides write their rows to /dev/null (the tool as CSV).
#
# Figures are medians in milliseconds, to a tenth. CPU is user + system
# time of the process (its rusage, in microseconds, taken by
# bench/run_timed.c, which the script compiles with `cc` into the work
# folder); on PostgreSQL the server backend's CPU of the
# session is added on both sides, read as the postmaster's reaped-children
# time (/proc/PID/stat, fields cutime and cstime) around the run, so it
# needs the server on this machine and readable data directory; without
# that only the client processes are counted and the table says so. Wall
# time is shown second: on a shared machine it mostly measures the load.
#
# Needs bash, a C compiler, the built tool, and sqlite3 or psql (plus ps
# and getconf).
# The script asserts nothing: it prints a table (Markdown) on stdout and
# its progress on stderr.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ORVALIS_BUILD_DIR:-$root/build}"
orvalis="$build/orvalis"
employees=100000
db=""
runs=5
only=""
work="$build/bench-compare"
fixedTool=0
asOf="01/11/2026"

die() {
  echo "compare: $*" >&2
  exit 2
}

while [[ $# -gt 0 ]]; do
  case "$1" in
    --employees) employees="${2:?--employees needs a number}"; shift 2 ;;
    --db) db="${2:?--db needs a URL}"; shift 2 ;;
    --runs) runs="${2:?--runs needs a number}"; shift 2 ;;
    --only) only="${2:?--only needs a pattern}"; shift 2 ;;
    --work-dir) work="${2:?--work-dir needs a folder}"; shift 2 ;;
    --tool) orvalis="${2:?--tool needs a path}"; fixedTool=1; shift 2 ;;
    -h | --help) sed -n '2,/^set -euo/p' "$0" | sed '$d; s/^# \{0,1\}//'; exit 0 ;;
    *) die "unknown argument '$1' (see --help)" ;;
  esac
done
[[ "$employees" =~ ^[1-9][0-9]*$ ]] || die "--employees: not a positive whole number: $employees"
[[ "$runs" =~ ^[1-9][0-9]*$ ]] || die "--runs: not a positive whole number: $runs"

# ---- the tool, built as the README builds it, when missing or out of date
newer=""
if [[ $fixedTool == 1 ]]; then
  [[ -x "$orvalis" ]] || die "--tool: not an executable: $orvalis"
elif [[ -x "$orvalis" ]]; then
  newer="$(find "$root" -path "$build" -prune -o -path "$root/.git" -prune -o \
    \( -name '*.cc' -o -name '*.h' -o -name '*.sql' -o -name 'CMakeLists.txt' \) -newer "$orvalis" -print -quit)"
fi
if [[ $fixedTool == 0 && ( ! -x "$orvalis" || -n "$newer" ) ]]; then
  echo "compare: building the tool ..." >&2
  bash "$root/scripts/build.sh" --target orvalis >&2
fi

mkdir -p "$work/tool"
work="$(cd "$work" && pwd)"

# ---- the timer: bash's `time` has whole milliseconds only
timer="$work/run_timed"
if [[ ! -x "$timer" || "$root/bench/run_timed.c" -nt "$timer" ]]; then
  "${CC:-cc}" -O2 -o "$timer" "$root/bench/run_timed.c" || die "cannot compile bench/run_timed.c"
fi

# ---- the database
if [[ -z "$db" ]]; then db="sqlite:$work/demo-$employees.db"; fi
case "$db" in
  sqlite:*) engine=sqlite; dbfile="${db#sqlite:}"; command -v sqlite3 >/dev/null || die "sqlite3 is not installed" ;;
  postgresql://* | postgres://*) engine=pg; command -v psql >/dev/null || die "psql is not installed" ;;
  *) die "--db: sqlite:PATH or postgresql://... expected" ;;
esac
export ORVALIS_TODAY=2026-11-01
tool=("$orvalis" --db "$db" --work-dir "$work/tool")
# A complete demo database is kept as it is (never written to); only a
# missing or unfinished one is built.
if [[ $engine == sqlite && -f "$dbfile" ]] && sqlite3 -readonly "$dbfile" \
  "select 1 from sqlite_master where name = 'ORVDEMOSTATE'" 2>/dev/null | grep -q 1; then
  :
elif [[ $engine == sqlite && -f "$dbfile" ]] && sqlite3 -readonly "$dbfile" \
  "select count(*) from PNLEMPMST" >/dev/null 2>&1; then
  : # a demo database from before the completion mark: used as it is
else
  echo "compare: building the demo database ($db) ..." >&2
  "${tool[@]}" demo-db --employees "$employees" --as-of "$asOf" --if-missing --quiet >&2
fi

client_sql() { # statement -> client's script on stdin
  if [[ $engine == sqlite ]]; then
    sqlite3 -readonly -batch "$dbfile" "$1"
  else
    psql -X -q -A -t -v ON_ERROR_STOP=1 -d "$db" -c "$1"
  fi
}

# ---- PostgreSQL: the postmaster whose reaped children are the backends
postmaster=""
ticks=100
if [[ $engine == pg ]]; then
  ticks="$(getconf CLK_TCK)"
  datadir="$(client_sql "show data_directory" 2>/dev/null || true)"
  if [[ -n "$datadir" && -r "$datadir/postmaster.pid" ]]; then
    postmaster="$(head -n 1 "$datadir/postmaster.pid")"
    [[ -r "/proc/$postmaster/stat" ]] || postmaster=""
  fi
  if [[ -z "$postmaster" ]]; then
    echo "compare: the server's processes cannot be read here: CPU counts the client processes only" >&2
  fi
fi

# CPU ticks of the postmaster's reaped children (ended backends).
reaped_ticks() {
  local stat
  stat="$(<"/proc/$postmaster/stat")"
  stat="${stat##*) }" # the fields after the command name
  local -a f
  read -r -a f <<<"$stat"
  echo $((f[13] + f[14])) # cutime, cstime (fields 16 and 17)
}

# Waits (up to 3 s) until the backends started since `before` have been
# reaped, so that their CPU is in the postmaster's children time.
wait_reaped() {
  local before="$1" i pid
  for ((i = 0; i < 300; i++)); do
    local fresh=0
    for pid in $(ps -o pid= --ppid "$postmaster"); do
      [[ " $before " == *" $pid "* ]] || fresh=1
    done
    [[ $fresh == 0 ]] && return 0
    sleep 0.01
  done
}

# ---- the reports: label|arguments of the tool
reports=(
  "SIR_HE (HESA check)|extract|SIR_HE|SIR_DATA"
  "ReportingData LOCATIONS (all)|extract|ReportingData|LOCATIONS||False"
  "ReportingData LOCATIONS L08|extract|ReportingData|LOCATIONS|L08|False"
  "Addresses EMPADDRALL|extract|Addresses|EMPLOYEE_ADDRESSES||EMPADDRALL"
  "AuditData PNLEMPMST,PNLEMPHST 2025|extract|AuditData|PNL_AUDIT|PNLEMPMST,PNLEMPHST|01/01/2025|31/12/2025"
  "Establishment 2025|extract|Establishment|ESTABLISHMENT|START_DATE=01/01/2025|END_DATE=31/12/2025"
  "Absence LISTING 2025/26|extract|Absence|LISTING|START_DATE=01/04/2025|END_DATE=31/03/2026"
  "Absence EMPLOYEEREVIEW 2025/26|extract|Absence|EMPLOYEEREVIEW|START_DATE=01/04/2025|END_DATE=31/03/2026"
  "CheckLists outstanding|extract|CheckLists|CHECKLISTS"
  "PostReview H2 2025|extract|PostReview|POST_REVIEW|START_DATE=01/07/2025|END_DATE=31/12/2025"
  "SIR_FE SIR_CPD 2024/25|extract|SIR_FE|SIR_CPD|START_DATE=01/08/2024|END_DATE=31/07/2025"
  "TrainingCosts 2024/25|extract|TrainingCosts|TRAINING_COSTS|START_DATE=01/08/2024|END_DATE=31/07/2025"
  "Holidays from 01/06/2025|extract|Holidays|09|START_DATE=01/06/2025"
  "FEMR 2025 FEMRPOP|extract|FEMR|81|START_DATE=01/01/2025|END_DATE=31/12/2025|QUAL_QUERY_ID=FEMRPOP|CATEGORY_ID=01"
)
for q in $(client_sql "select CODE_ID from ADMGRIDH order by CODE_ID"); do
  reports+=("query $q|query|$q")
done

# ---- capture each report's statements and rows
labels=()
index=()
declare -A scripts rows stmts
n=0
for entry in "${reports[@]}"; do
  IFS='|' read -r -a parts <<<"$entry"
  label="${parts[0]}"
  if [[ -n "$only" ]] && ! grep -qE -- "$only" <<<"$label"; then continue; fi
  n=$((n + 1))
  trace="$work/trace-$n.txt"
  rm -f "$trace"
  if ! "${tool[@]}" --trace-sql "$trace" "${parts[@]:1}" --format csv >"$work/out-$n.csv" 2>"$work/err-$n.txt"; then
    echo "compare: skipping $label: the tool failed or found nothing ($(head -c 200 "$work/err-$n.txt"))" >&2
    continue
  fi
  if grep -qviE '^[A-Z]+'$'\t''[[:space:]]*(select|with)[[:space:]]' "$trace"; then
    echo "compare: skipping $label: it sends statements other than reads" >&2
    continue
  fi
  script="$work/client-$n.sql"
  if [[ $engine == sqlite ]]; then
    # The tool's connection waits up to 5 s for another process's lock and
    # runs with a page cache of 64 MiB; the shell gets the same.
    { echo ".timeout 5000"; echo "PRAGMA cache_size = -65536;"; sed 's/^[A-Z]*\t//; s/$/;/' "$trace"; } >"$script"
  else
    sed 's/^[A-Z]*\t//; s/$/;/' "$trace" >"$script"
  fi
  labels+=("$label")
  scripts[$label]="$script"
  stmts[$label]="$(wc -l <"$trace")"
  rows[$label]=$(($(wc -l <"$work/out-$n.csv") - 1))
  declare -a "argv_$n"
  eval "argv_$n=(\"\${parts[@]:1}\")"
  index[$n]="$label"
  echo "compare: $label: ${stmts[$label]} statements, ${rows[$label]} rows" >&2
done
[[ ${#labels[@]} -gt 0 ]] || die "no report to time"

# ---- timed runs
: >"$work/errors.txt"
declare -A ourCpu ourWall clientCpu clientWall

# Runs a command to /dev/null; prints "cpu_us wall_us".
timed() {
  local before="" reaped=0
  if [[ -n "$postmaster" ]]; then
    before="$(ps -o pid= --ppid "$postmaster" | tr '\n' ' ')"
    reaped="$(reaped_ticks)"
  fi
  "$timer" "$work/times.txt" "$@" >/dev/null 2>>"$work/errors.txt" || true
  local user sys wall
  read -r user sys wall <"$work/times.txt"
  local cpu=$((user + sys))
  if [[ -n "$postmaster" ]]; then
    wait_reaped "$before"
    cpu=$((cpu + ($(reaped_ticks) - reaped) * 1000000 / ticks))
  fi
  echo "$cpu $wall"
}

run_ours() {
  local -n argv="argv_$1"
  timed "${tool[@]}" "${argv[@]}" --format csv
}
run_client() {
  if [[ $engine == sqlite ]]; then
    timed sqlite3 -readonly -batch "$dbfile" ".read $2"
  else
    timed psql -X -q -A -t -v ON_ERROR_STOP=1 -d "$db" -f "$2"
  fi
}

for ((r = 1; r <= runs; r++)); do
  echo "compare: run $r of $runs ..." >&2
  for ((i = 1; i <= n; i++)); do
    label="${index[$i]:-}"
    [[ -n "$label" ]] || continue
    if ((r % 2)); then
      read -r c w < <(run_ours "$i")
      read -r c2 w2 < <(run_client "$i" "${scripts[$label]}")
    else
      read -r c2 w2 < <(run_client "$i" "${scripts[$label]}")
      read -r c w < <(run_ours "$i")
    fi
    ourCpu[$label]+="$c "
    ourWall[$label]+="$w "
    clientCpu[$label]+="$c2 "
    clientWall[$label]+="$w2 "
  done
done

# Process start alone: the tool printing its help, the client doing
# nothing on the database (for psql this includes the connection and the
# server backend's start).
startOurs=""
startClient=""
for ((r = 1; r <= runs; r++)); do
  read -r c w < <(timed "$orvalis" --help)
  startOurs+="$c "
  if [[ $engine == sqlite ]]; then
    read -r c w < <(timed sqlite3 -readonly -batch "$dbfile" "")
  else
    read -r c w < <(timed psql -X -q -A -t -d "$db" -c "")
  fi
  startClient+="$c "
done

median() {
  local -a v
  mapfile -t v < <(tr ' ' '\n' <<<"$1" | grep -v '^$' | sort -n)
  local k=${#v[@]}
  if ((k % 2)); then echo "${v[k / 2]}"; else echo $(((v[k / 2 - 1] + v[k / 2]) / 2)); fi
}
ms() { # microseconds -> milliseconds with one decimal
  local t=$((($1 + 50) / 100))
  echo "$((t / 10)).$((t % 10))"
}
ratio() { # a b -> a/b with two decimals
  if (($2 == 0)); then echo "-"; else printf '%d.%02d' $(($1 * 100 / $2 / 100)) $(($1 * 100 / $2 % 100)); fi
}

client="sqlite3"
[[ $engine == pg ]] && client="psql"
cpuNote="user+sys"
[[ $engine == pg && -n "$postmaster" ]] && cpuNote="user+sys, with the server backend"
[[ $engine == pg && -z "$postmaster" ]] && cpuNote="user+sys of the client process only"
echo "Database: $db ($(date -u +%Y-%m-%d), $(nproc) cores, $runs runs each, medians; CPU: $cpuNote)"
echo
echo "| report | rows | statements | orvalis CPU ms | $client CPU ms | ratio | orvalis wall ms | $client wall ms | wall ratio |"
echo "|---|--:|--:|--:|--:|--:|--:|--:|--:|"
for label in "${labels[@]}"; do
  oc=$(median "${ourCpu[$label]}")
  cc=$(median "${clientCpu[$label]}")
  ow=$(median "${ourWall[$label]}")
  cw=$(median "${clientWall[$label]}")
  echo "| $label | ${rows[$label]} | ${stmts[$label]} | $(ms "$oc") | $(ms "$cc") | $(ratio "$oc" "$cc") | $(ms "$ow") | $(ms "$cw") | $(ratio "$ow" "$cw") |"
done
echo
echo "Process start alone (CPU ms, median): orvalis $(ms "$(median "$startOurs")"), $client $(ms "$(median "$startClient")")."
if [[ -s "$work/errors.txt" ]]; then
  echo "compare: some runs wrote errors, see $work/errors.txt" >&2
fi
