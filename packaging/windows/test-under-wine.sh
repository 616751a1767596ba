#!/bin/bash
# Runs what build.sh built under Wine: the proof of the library's binding, the test programs without windows, and the
# command line as it is in the portable folder.
# Environment: OSTREL_WINE32, the runner "RUNNER FOLDER PROGRAM.exe [ARGUMENT...]" of 32-bit Windows programs, which
# shows the folder to the program and makes it its working folder; ../shared/tools/run-in-wine32.sh when not set.
# Skips, and says so, when there is no runner.
set -euo pipefail
cd "$(dirname "$0")/../.."

triple=i686-w64-mingw32
build=build/windows
runner=${OSTREL_WINE32:-../shared/tools/run-in-wine32.sh}
[ -x "$runner" ] || { echo "under Wine: skipped, there is no runner (OSTREL_WINE32)"; exit 0; }
[ -e "$build/core-tests.txt" ] || { echo "under Wine: skipped, there is no Windows build"; exit 0; }
QT_WINDOWS_ROOT=$(sed -n "s/^QT_WINDOWS_ROOT:PATH=//p" $build/CMakeCache.txt)
. packaging/windows/needed-libraries.sh

stage=$build/under-wine
rm -rf "$stage"
mkdir -p "$stage/abi" "$stage/core"
failures=0

# The binding: needs no DLL but the library itself.
cp $build/tests/windows/{test_kestrixabi.exe,Incomplete.dll} $build/packaging/windows/kestrix-sim/Kestrix{,Cdecl}.dll \
    "$stage/abi/"
result=$(timeout 600 "$runner" "$stage/abi" test_kestrixabi.exe 2>"$stage/abi/stderr" | tr -d '\r' || true)
echo "$result"
grep -q ' 0 failed$' <<<"$(tail -1 <<<"$result")" || failures=1
timeout 60 "$runner" "$stage/abi" test_kestrixabi.exe speed 2>/dev/null | tr -d '\r' || true

# The test programs. They write a file: what a test prints does not always reach a pipe under Wine.
mapfile -t tests < <(grep . "$build/core-tests.txt")
for name in "${tests[@]}"; do
    cp "$build/tests/$name.exe" "$stage/core/"
done
cp fuzz/corpus/dbc/everything.dbc databases/vehicle.dbc "$stage/core/"
copy_needed_libraries "$stage/core"
for name in "${tests[@]}"; do
    timeout 300 "$runner" "$stage/core" "$name.exe" -o "$name.txt,txt" >/dev/null 2>&1 || true
    report=$stage/core/$name.txt
    totals=$(grep -a '^Totals:' "$report" 2>/dev/null | tr -d '\r' || echo "no totals: it ended early")
    echo "$name under Wine: $totals"
    if ! grep -q ' 0 failed' <<<"$totals"; then
        failures=1
        grep -aA4 '^FAIL\|^QFATAL' "$report" 2>/dev/null || tail -5 "$report" 2>/dev/null || true
    fi
done

# The command line through the simulated library: what was sent is in the recording, and a recording is the same in
# another format.
cp -r "$(ls -d $build/Ostrel-*/)" "$stage/cli"
cp $build/packaging/windows/kestrix-sim/Kestrix.dll "$stage/cli/"
cat >"$stage/cli/sent.log" <<'FRAMES'
(1.000000) can0 123#0102030405060708
(1.001000) can1 12345678#AABB
(1.002000) can0 7FF##100112233445566778899AABB
(1.003000) can0 200#R4
(1.004000) can1 555##0
FRAMES
cli() {
    timeout 120 "$runner" "$stage/cli" ostrel-cli.exe "$@" >"$stage/cli/output" 2>&1 ||
        { echo "ostrel-cli.exe $1 under Wine: ended with $?"; cat "$stage/cli/output"; failures=1; }
}
frames_of() { sed 's/^([^)]*) //; s/ [RT]\r*$//' "$1"; }
cli replay sent.log --record replayed.blf
cli convert replayed.blf --filter tx came.log
cli record --count 500 recorded.blf
cli convert recorded.blf recorded.asc
cli convert recorded.asc by-asc.log
cli convert recorded.blf direct.log
if cmp <(frames_of "$stage/cli/sent.log") <(frames_of "$stage/cli/came.log") &&
    [ "$(wc -l <"$stage/cli/direct.log")" = 500 ] && cmp "$stage/cli/direct.log" "$stage/cli/by-asc.log"; then
    echo "ostrel-cli.exe under Wine: replayed, recorded and converted"
else
    echo "ostrel-cli.exe under Wine: frames differ"
    failures=1
fi

[ $failures = 0 ] || { echo "under Wine: failed" >&2; exit 1; }
echo "under Wine: passed"
