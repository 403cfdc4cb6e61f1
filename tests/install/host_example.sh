#!/usr/bin/env bash
# The installed package from a clean prefix: installs the build into a
# temporary prefix, builds examples/host against it twice (CMake's
# find_package, then pkg-config), and runs both on a small demo database;
# each must print the rows the tool's own extract gives.
#   host_example.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1 source=$2
scratch=$(mktemp -d "${TMPDIR:-/tmp}/orvalis-install-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
for f in include/orvalis/component/class_registry.h include/orvalis/data/standalone_environment.h \
         include/orvalis/runtime/xml_rowset.h lib/liborvalis_reports.a lib/cmake/orvalis/orvalisConfig.cmake \
         lib/pkgconfig/orvalis.pc; do
  [ -f "$prefix/$f" ] || { echo "not installed: $f"; exit 1; }
done

cxxflags=${ORVALIS_HOST_CXXFLAGS:-}
ldflags=${ORVALIS_HOST_LDFLAGS:-}
cmake -S "$source/examples/host" -B "$scratch/host" -DCMAKE_PREFIX_PATH="$prefix" \
  "-DCMAKE_CXX_FLAGS=$cxxflags" "-DCMAKE_EXE_LINKER_FLAGS=$ldflags" >/dev/null
cmake --build "$scratch/host" >/dev/null
PKG_CONFIG_PATH=$prefix/lib/pkgconfig
export PKG_CONFIG_PATH
# shellcheck disable=SC2046
# shellcheck disable=SC2086
g++ $cxxflags -o "$scratch/host-pc" "$source/examples/host/main.cc" $(pkg-config --cflags --libs orvalis) $ldflags

"$prefix/bin/orvalis" --work-dir "$scratch/work" demo-db --employees 40 --seed 7 --quiet >/dev/null
url=sqlite:$scratch/work/demo.db
expected=$(( $("$prefix/bin/orvalis" --db "$url" extract SIR_HE SIR_DATA --format csv | wc -l) - 1 ))
[ "$expected" -gt 0 ] || { echo "the demo database gives no SIR_DATA rows"; exit 1; }
for host in "$scratch/host/orvalis_host" "$scratch/host-pc"; do
  "$host" "$url" > "$scratch/out.txt"
  got=$(tail -1 "$scratch/out.txt")
  [ "$got" = "($expected rows)" ] || { echo "$host: $got, expected ($expected rows)"; exit 1; }
  [ "$(($(wc -l < "$scratch/out.txt") - 2))" -eq "$expected" ] || { echo "$host: row lines differ"; exit 1; }
done
echo "the host example prints the $expected rows, built with find_package and with pkg-config"
