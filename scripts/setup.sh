#!/usr/bin/env bash
# Installs what the build needs from Debian's packages (quick when all is present),
# then configures and builds. Usage: scripts/setup.sh [build-dir | --packages-only]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-svg-dev libqt6svg6 libgl-dev
    qt6-image-formats-plugins qt6-qpa-plugins
    qt6-translations-l10n # Qt's own texts (file dialogs, standard buttons) in Japanese
    libpugixml-dev libexiv2-dev
    libxlsxwriter-dev libminizip-dev # the check report's workbook, and reading it back
    libxslt1-dev # the index page: XSLT over the index copy
    libbenchmark-dev time
    clang libclang-rt-14-dev # scripts/sanitize.sh: clang and its sanitizer and libFuzzer runtimes
    fontconfig fonts-ipafont-gothic
    xvfb xauth # a virtual display: xvfb-run for looking at the windows where there is none
    dpkg-dev desktop-file-utils man-db # the package (cpack, dpkg-shlibdeps) and its checks
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "setup: installing ${missing[*]}"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update -qq
    $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

[ "$build" = "--packages-only" ] && exit 0

werror=OFF
[ "${CI:-}" = "true" ] && werror=ON
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTOVI_WERROR=$werror >/dev/null
cmake --build "$build" -j2
