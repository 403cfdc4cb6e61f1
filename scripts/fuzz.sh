#!/usr/bin/env bash
# Builds the libFuzzer targets (tests/fuzz) with clang++ and
# -fsanitize=fuzzer,address,undefined into build-fuzz/ (or
# $ORVALIS_FUZZ_BUILD_DIR), then runs each one for a bounded time on its
# seed corpus in tests/fuzz/corpus/<target>/.
#
#   scripts/fuzz.sh [SECONDS]   seconds per target (default
#                               $ORVALIS_FUZZ_SECONDS, else 45)
#
# New inputs libFuzzer finds go to a scratch folder, never into the
# repository's corpus. A crash, a leak or a broken promise leaves the
# reproducer as build-fuzz/crashes/<target>/crash-* and fails the script;
# rerun it with build-fuzz/tests/fuzz/<target> FILE. Prints one line per
# target with its number of executions.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ORVALIS_FUZZ_BUILD_DIR:-$root/build-fuzz}"
seconds="${1:-${ORVALIS_FUZZ_SECONDS:-45}}"
targets=(fuzz_keyed_text fuzz_settings_file fuzz_dates fuzz_recordset_filter fuzz_criterion_values)

bash "$root/scripts/install-deps.sh" fuzz

sanitizers="-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer"
if [ ! -f "$build/CMakeCache.txt" ]; then
  # Debug keeps assertions; -O1 keeps the fuzzing fast.
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ \
    -DORVALIS_FUZZ=ON -DORVALIS_BUILD_TESTS=OFF -DORVALIS_BUILD_BENCH=OFF \
    "-DCMAKE_CXX_FLAGS=-O1 -fsanitize=fuzzer-no-link $sanitizers" \
    "-DCMAKE_EXE_LINKER_FLAGS=$sanitizers" >/dev/null
fi
cmake --build "$build" -j"$(nproc)" --target orvalis_fuzz

export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
export ASAN_OPTIONS="detect_leaks=1"
status=0
for t in "${targets[@]}"; do
  work="$build/corpus/$t"
  crashes="$build/crashes/$t"
  mkdir -p "$work" "$crashes"
  log="$build/$t.log"
  if "$build/tests/fuzz/$t" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -artifact_prefix="$crashes/" -print_final_stats=1 \
    "$work" "$root/tests/fuzz/corpus/$t" >"$log" 2>&1; then
    result=ok
  else
    result="FAILED (see $log and $crashes/)"
    status=1
  fi
  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo "?")
  echo "fuzz: $t: $runs executions in ${seconds}s: $result"
  if [ "$result" != ok ]; then tail -n 30 "$log" >&2; fi
done
exit $status
