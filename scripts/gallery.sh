#!/usr/bin/env bash
# Writes a picture of every window of the viewer, opened on the bundled sample delivery, into
# OUT (default build/gallery/), one PNG per window, on a virtual X display (xvfb-run).
# Usage: scripts/gallery.sh [OUT]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$here/build}
out=${1:-$build/gallery}
if [ ! -f "$build/build.ninja" ]; then
    "$here/scripts/setup.sh" "$build"
fi
cmake --build "$build" -j2 --target tovi-gallery tovi_sample
mkdir -p "$out"
out=$(cd "$out" && pwd)
# A screen larger than the largest picture, so that no window is cut by its edge.
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 2048x1280x24" \
    "$build/bin/tovi-gallery" "$build/sample/INDEX_C" "$out"
