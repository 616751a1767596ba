#!/bin/bash
# Builds the program for 32-bit Windows and packs it:
#   build/windows/Ostrel-VERSION-windows.zip              the portable program
#   build/windows/Kestrix-simulated-VERSION-windows.zip   the simulated adapter's library, to try it without hardware
# Environment:
#   QT_WINDOWS_ROOT   a Qt 5.15 for win32-g++; without it one is built once, from Debian's source package
#   QWT_WINDOWS_ROOT  a Qwt 6.1 for that Qt; likewise
#   OSTREL_CACHE      where these are kept; ~/.cache/ostrel when not set
# Needs: cmake, ninja, g++-mingw-w64-i686-posix, qttools5-dev, qttranslations5-l10n, python3.
set -euo pipefail
cd "$(dirname "$0")/../.."

triple=i686-w64-mingw32
build=build/windows
version=$(sed -n 's/^project(Ostrel VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

for tool in cmake ninja python3 $triple-g++-posix; do
    command -v "$tool" >/dev/null || { echo "build.sh: $tool is missing" >&2; exit 1; }
done

if [ -z "${QT_WINDOWS_ROOT:-}" ]; then
    QT_WINDOWS_ROOT=${OSTREL_CACHE:-$HOME/.cache/ostrel}/qt-5.15-$triple
    [ -e "$QT_WINDOWS_ROOT/lib/cmake/Qt5/Qt5Config.cmake" ] || packaging/windows/build-qt.sh "$QT_WINDOWS_ROOT"
fi
export QT_WINDOWS_ROOT
if [ -z "${QWT_WINDOWS_ROOT:-}" ]; then
    QWT_WINDOWS_ROOT=${OSTREL_CACHE:-$HOME/.cache/ostrel}/qwt-6.1-$triple
    [ -e "$QWT_WINDOWS_ROOT/lib/libqwt-qt5.dll.a" ] || packaging/windows/build-qwt.sh "$QWT_WINDOWS_ROOT"
fi
export QWT_WINDOWS_ROOT

cmake --fresh --preset windows # another Qt than last time leaves nothing behind
cmake --build --preset windows

# --- the portable folder ---------------------------------------------------------------------------------------------

. packaging/windows/needed-libraries.sh
program=$build/Ostrel-$version
rm -rf "$program"
cmake --install "$build" --prefix "$program" >/dev/null
# The manuals are set by a program of this machine, so by a build for it.
cmake --preset release >/dev/null
cmake --build --preset release --target manuals
cp -r build/release/Ostrel/help "$program/"
mkdir -p "$program"/{platforms,styles,licences}
cp "$QT_WINDOWS_ROOT/plugins/platforms/qwindows.dll" "$program/platforms/"
cp "$QT_WINDOWS_ROOT/plugins/styles/qwindowsvistastyle.dll" "$program/styles/"
copy_needed_libraries "$program"
find "$program" \( -name '*.exe' -o -name '*.dll' \) -exec $triple-strip --strip-unneeded {} +

documents=/usr/share/doc
# A Qt that was built elsewhere may not say which revision of the source package it comes from.
qt_version=$(sed -n 's/^set(PACKAGE_VERSION \([0-9.]*\))/\1/p' \
    "$QT_WINDOWS_ROOT/lib/cmake/Qt5Core/Qt5CoreConfigVersion.cmake")
qt_source=$(cat "$QT_WINDOWS_ROOT/debian-source" 2>/dev/null || echo "qtbase-opensource-src $qt_version (Debian 12)")
qwt_version=$(sed -n 's/^#define QWT_VERSION_STR *"\(.*\)"/\1/p' "$QWT_WINDOWS_ROOT/include/qwt/qwt_global.h")
qwt_source=$(cat "$QWT_WINDOWS_ROOT/debian-source" 2>/dev/null || echo "qwt $qwt_version (Debian 12)")
sed "s/@QT_VERSION@/$qt_version/; s/@QT_SOURCE@/$qt_source/; s/@QWT_VERSION@/$qwt_version/; s/@QWT_SOURCE@/$qwt_source/" \
    packaging/windows/licences/README.txt.in \
    >"$program/licences/README.txt"
for licence in GPL-3 LGPL-3 LGPL-2.1; do
    cp "/usr/share/common-licenses/$licence" "$program/licences/$licence.txt"
done
cp "$QWT_WINDOWS_ROOT/COPYING" "$program/licences/qwt-licence.txt"
cp $documents/libqt5core5a/copyright "$program/licences/qt-copyright.txt"
cp $documents/gcc-mingw-w64-i686-posix/copyright "$program/licences/gcc-copyright.txt"
cp $documents/mingw-w64-i686-dev/copyright "$program/licences/mingw-w64-copyright.txt"

# --- the zips --------------------------------------------------------------------------------------------------------

library=$build/Kestrix-simulated-$version
rm -rf "$library"
mkdir -p "$library"
cp "$build/packaging/windows/kestrix-sim/Kestrix.dll" packaging/windows/kestrix-sim/README.txt "$library/"
$triple-strip --strip-unneeded "$library/Kestrix.dll"
packaging/windows/check-exports.sh "$library/Kestrix.dll"

limit=$((40 * 1024 * 1024))
for folder in "$program" "$library"; do
    name=$(basename "$folder")
    rm -f "$build/$name-windows.zip"
    packaging/windows/make-zip.py "$folder" "$build/$name-windows.zip"
    size=$(stat -c %s "$build/$name-windows.zip")
    echo "$build/$name-windows.zip: $size bytes"
    [ "$size" -lt $limit ] || { echo "build.sh: larger than $limit bytes" >&2; exit 1; }
done
