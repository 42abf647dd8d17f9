#!/usr/bin/env bash
# Checks that the build installs as a desktop program: makes the Debian package and unpacks it
# (dpkg -x), and installs with cmake --install into a DESTDIR, each into a temporary root, and
# runs the programs of each on the sample delivery from a folder away from the build, with no
# LD_LIBRARY_PATH, so that a program that works only inside the build tree fails here.
# Usage: scripts/check-install.sh [BUILD-DIR]   (CTest runs it as InstalledCopy)
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$here/build}" && pwd)
sample=$build/sample/INDEX_C

work=$(mktemp -d "${TMPDIR:-/tmp}/tovi-install.XXXXXX")
trap 'rm -rf "$work"' EXIT
fail() {
    echo "check-install: $*" >&2
    exit 1
}
[ -f "$sample/PHOTO/PHOTO.XML" ] || fail "no sample delivery in $sample (build the target tovi_sample)"

# The programs run as a stranger to this machine would run them: their own home, settings and
# temporary folder, all inside the work folder.
unset LD_LIBRARY_PATH QT_PLUGIN_PATH
export HOME=$work/home TMPDIR=$work/tmp XDG_CONFIG_HOME=$work/home/.config
export XDG_RUNTIME_DIR=$work/runtime
mkdir -p "$HOME" "$TMPDIR" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"

# ---- the package -----------------------------------------------------------------------------
(cd "$work" && cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/package" >"$work/cpack.log" 2>&1) ||
    { cat "$work/cpack.log" >&2; fail "cpack failed"; }
debs=("$work"/package/tovicore_*.deb)
[ -f "${debs[0]}" ] || fail "cpack made no tovicore_*.deb"
deb=${debs[0]}
info=$(dpkg-deb -I "$deb")
depends=$(printf '%s\n' "$info" | sed -n 's/^ Depends: //p')
for needed in libqt6core6 libqt6gui6 libqt6widgets6 libqt6svg6 libexiv2 libpugixml libxlsxwriter \
    libminizip libxslt1 qt6-qpa-plugins qt6-image-formats-plugins fonts-ipafont-gothic; do
    [[ $depends == *"$needed"* ]] || fail "the package does not depend on $needed: $depends"
done
for field in Package Version Maintainer Description Section; do
    printf '%s\n' "$info" | grep -q "^ $field: ." || fail "the package has no $field"
done
dpkg -x "$deb" "$work/deb"

# ---- cmake --install into a DESTDIR ----------------------------------------------------------
DESTDIR=$work/destdir cmake --install "$build" --prefix /opt/tovicore >"$work/install.log" 2>&1 ||
    { cat "$work/install.log" >&2; fail "cmake --install failed"; }

# A prefix the installing user may not write to fails with the installer's own message.
mkdir -m 555 "$work/locked"
chmod o+x "$work"
as_user=()
if [ "$(id -u)" -eq 0 ]; then
    as_user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi
if "${as_user[@]}" cmake --install "$build" --prefix "$work/locked/usr" >"$work/locked.log" 2>&1; then
    fail "cmake --install into a read-only prefix succeeded"
fi
grep -q "cannot create directory" "$work/locked.log" ||
    { cat "$work/locked.log" >&2; fail "cmake --install into a read-only prefix said something else"; }

# ---- each installed copy -------------------------------------------------------------------
check_copy() {
    local name=$1 prefix=$2
    local bin=$prefix/bin
    # The programs and nothing else of the build: no tests, tools or benchmarks.
    local programs
    programs=$(find "$bin" -mindepth 1 -printf '%f\n' | sort | tr '\n' ' ')
    [ "$programs" = "tovi tovi-viewer " ] || fail "$name: $bin holds $programs"
    for file in lib/tovicore/libtovicore.so lib/tovicore/libtoviui.so \
        share/tovicore/READITEM.XML share/tovicore/XSLPLATE/MLIT/INDEX_C.XSL \
        share/applications/tovicore.desktop share/icons/hicolor/scalable/apps/tovicore.svg \
        share/man/man1/tovi.1.gz share/man/man1/tovi-viewer.1.gz; do
        [ -f "$prefix/$file" ] || fail "$name: $file is missing"
    done
    desktop-file-validate "$prefix/share/applications/tovicore.desktop" ||
        fail "$name: the desktop file is not valid"
    for page in tovi tovi-viewer; do
        local said
        said=$(MANWIDTH=80 man --warnings -l "$prefix/share/man/man1/$page.1.gz" 2>&1 >/dev/null)
        [ -z "$said" ] || fail "$name: man $page: $said"
    done
    # Our libraries come from the installed copy, never from the build tree.
    for program in "$bin/tovi" "$bin/tovi-viewer" "$prefix/lib/tovicore/libtoviui.so"; do
        if readelf -d "$program" | grep -E 'R(UN)?PATH' | grep -qF "$build"; then
            fail "$name: $program looks in the build tree for libraries"
        fi
        local libs
        libs=$(ldd "$program")
        if grep -q "not found" <<<"$libs"; then
            fail "$name: $program misses libraries: $(grep 'not found' <<<"$libs")"
        fi
        local found
        found=$(sed -n 's/^\s*libtovicore.so => \(\S*\) .*/\1/p' <<<"$libs")
        if [ -z "$found" ] ||
            [ "$(realpath "$found")" != "$(realpath "$prefix/lib/tovicore/libtovicore.so")" ]; then
            fail "$name: $program takes libtovicore.so from elsewhere: $(grep libtovicore <<<"$libs")"
        fi
    done

    local run=$work/run-$name
    mkdir -p "$run"
    cd "$run"
    "$bin/tovi" --profile "$run/profile.ini" info "$sample/PHOTO" >"$run/info.txt" 2>"$run/info.err" ||
        { cat "$run/info.err" >&2; fail "$name: tovi info failed"; }
    grep -q . "$run/info.txt" || fail "$name: tovi info printed nothing"
    # The index stylesheets come from the installed data folder.
    "$bin/tovi" --profile "$run/profile.ini" index "$sample/PHOTO" --json >"$run/index.json" \
        2>"$run/index.err" || { cat "$run/index.err" >&2; fail "$name: tovi index failed"; }
    grep -qF "\"stylesheetPath\": \"$prefix/share/tovicore/XSLPLATE/" "$run/index.json" ||
        fail "$name: tovi index found no stylesheet in $prefix/share/tovicore: $(cat "$run/index.json")"
    QT_QPA_PLATFORM=offscreen "$bin/tovi-viewer" "$sample" --profile "$run/profile.ini" \
        --size 1024x700 --screenshot "$run/shot.png" >"$run/viewer.out" 2>"$run/viewer.err" ||
        { cat "$run/viewer.err" >&2; fail "$name: tovi-viewer --screenshot failed"; }
    [ -s "$run/shot.png" ] || fail "$name: tovi-viewer wrote no picture"
    # Unattended, every message the viewer would show goes to standard error.
    if grep -q "READITEM\|XSLPLATE\|できません\|ありません" "$run/viewer.err"; then
        fail "$name: tovi-viewer said: $(cat "$run/viewer.err")"
    fi
    cd "$work"
    echo "check-install: $name: tovi info, tovi index and tovi-viewer ran from $prefix"
}

check_copy package "$work/deb/usr"
check_copy destdir "$work/destdir/opt/tovicore"
