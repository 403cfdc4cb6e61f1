#!/usr/bin/env bash
# The main job: installs and builds on first use, creates the demo HR
# database in the work folder when it is absent, and runs a real extract on
# it. Extra arguments are passed to the extract.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ORVALIS_BUILD_DIR:-$root/build}"

bash "$root/scripts/install-deps.sh"
bash "$root/scripts/build.sh" --target orvalis >/dev/null

orvalis="$build/orvalis"
work="${ORVALIS_WORK_DIR:-${XDG_DATA_HOME:-$HOME/.local/share}/orvalis}"
export ORVALIS_WORK_DIR="$work"
if [ ! -f "$work/demo.db" ]; then
  "$orvalis" demo-db
fi
"$orvalis" extract ReportingData LOCATIONS "$@"
