#!/usr/bin/env bash
# Installs every Debian package the build, the tests and the main job need;
# "install-deps.sh fuzz" adds what the fuzz targets need (scripts/fuzz.sh
# asks for it): clang, and libclang-rt-dev, which holds libFuzzer and the
# sanitizer runtimes of Debian's default clang.
# Idempotent: packages already present are skipped, and apt is not touched
# at all when nothing is missing. Run as root (or with sudo available).
set -euo pipefail

packages=(
  g++ cmake make pkg-config
  libsqlite3-dev sqlite3
  libpq-dev postgresql-15 postgresql-client-15
  unixodbc unixodbc-dev odbc-postgresql
  libfmt-dev libcli11-dev nlohmann-json3-dev libpugixml-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  libxml2-utils ccache
  libxlsxwriter-dev python3-openpyxl chromium
)
if [ "${1:-}" = fuzz ]; then
  packages+=(clang libclang-rt-dev)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "installing: ${missing[*]}" >&2
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
