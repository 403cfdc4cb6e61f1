#!/usr/bin/env bash
# The main job: installs and builds on first use, creates the demo HR
# database in the work folder when it is absent (and refuses one that a
# stopped build left unfinished), and runs a real extract on
# it: the employees of one location (default L08, London) through the
# ReportingData class. Arguments replace the location code.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ORVALIS_BUILD_DIR:-$root/build}"

bash "$root/scripts/install-deps.sh"
bash "$root/scripts/build.sh" --target orvalis >/dev/null

orvalis="$build/orvalis"
export ORVALIS_WORK_DIR="${ORVALIS_WORK_DIR:-${XDG_DATA_HOME:-$HOME/.local/share}/orvalis}"
"$orvalis" demo-db --if-missing
"$orvalis" extract ReportingData LOCATIONS "${1:-L08}" False --format table
