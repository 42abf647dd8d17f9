#!/usr/bin/env bash
# The main job: set up, build, and open the bundled sample delivery in the viewer. Where there
# is no display, the viewer runs offscreen and writes its window's picture instead.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$here/build}
"$here/scripts/setup.sh" "$build"
sample="$build/sample/INDEX_C"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    shot="$build/screenshot.png"
    QT_QPA_PLATFORM=offscreen "$build/bin/tovi-viewer" "$sample" --size 1366x768 \
        --screenshot "$shot" "$@"
    echo "$shot"
else
    exec "$build/bin/tovi-viewer" "$sample" "$@"
fi
