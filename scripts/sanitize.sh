#!/usr/bin/env bash
# The sanitizer run: builds everything with clang, AddressSanitizer and
# UndefinedBehaviorSanitizer into build-asan/ (TOVI_FUZZ=ON), runs every test there once, then
# runs each fuzz target for a bounded time on a copy of its seeds.
# Usage: scripts/sanitize.sh [seconds-per-target]   (default 30)
# JOBS sets the build and test parallelism (default 2). A finding fails the script; the input
# that caused it is kept in build-asan/fuzz-findings/. Nothing is written outside build-asan/:
# the tests' temporary files go to build-asan/tmp/ and the targets' to build-asan/fuzz/work/,
# both removed at the end.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${ASAN_BUILD_DIR:-$here/build-asan}
seconds=${1:-30}
jobs=${JOBS:-2}
targets=(photoxml readitem exif svg controlvalue image)

"$here/scripts/setup.sh" --packages-only

start=$SECONDS
CC=clang CXX=clang++ cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTOVI_FUZZ=ON -DTOVI_BUILD_BENCH=OFF -DTOVI_WERROR=ON >/dev/null
cmake --build "$build" -j"$jobs"
echo "sanitize: build took $((SECONDS - start)) s"

work="$build/tmp"
rm -rf "$work"
mkdir -p "$work"
# A target stopped by a finding leaves its work folder in fuzz/work/; it goes too.
trap 'rm -rf "$work" "$build/fuzz/work"' EXIT
export TMPDIR="$work"
export QT_QPA_PLATFORM=offscreen
# Leaks stay on: the tests and targets run clean without suppressions.
export ASAN_OPTIONS="detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"

start=$SECONDS
(cd "$build" && ctest --output-on-failure -j"$jobs")
echo "sanitize: tests took $((SECONDS - start)) s"

findings="$build/fuzz-findings"
mkdir -p "$findings"
status=0
summary=()
for name in "${targets[@]}"; do
    corpus="$work/corpus-$name"
    rm -rf "$corpus"
    cp -r "$build/fuzz/corpus/$name" "$corpus"
    log="$build/fuzz/$name.log"
    echo "fuzz: $name for ${seconds} s"
    if "$build/bin/fuzz_$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        -dict="$here/fuzz/$name.dict" -artifact_prefix="$findings/$name-" -print_final_stats=1 \
        "$corpus" >"$log" 2>&1; then
        result=clean
    else
        status=1
        result="FINDING (see $log)"
        tail -n 60 "$log"
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    summary+=("$(printf '%-13s %10s executions  %s' "$name" "${runs:-?}" "$result")")
    rm -rf "$corpus"
done
printf '%s\n' "${summary[@]}"
exit $status
