#!/usr/bin/env bash
# Sets up, builds and runs every test.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$here/build}
"$here/scripts/setup.sh" "$build"
export QT_QPA_PLATFORM=offscreen
cd "$build"
ctest --output-on-failure -j2 "$@"
