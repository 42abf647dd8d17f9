#!/usr/bin/env bash
# The main job: set up, build, and open the bundled sample delivery.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$here/build}
"$here/scripts/setup.sh" "$build"
sample="$build/sample/INDEX_C/PHOTO"
exec "$build/bin/tovi" info "$sample" "$@"
