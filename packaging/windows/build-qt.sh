#!/bin/bash
# build-qt.sh DIR
# Builds Qt for 32-bit Windows (mingw) from Debian's source package into DIR, which is then a QT_WINDOWS_ROOT.
# Takes about half an hour of one processor; nothing of the system's package configuration is changed.
# Needs: apt with a reachable Debian archive, dpkg-dev, g++-mingw-w64-i686-posix, make, python3, perl.
set -euo pipefail
. "$(dirname "$0")/debian-source.sh"

prefix=$(realpath -m "${1:?usage: build-qt.sh DIR}")
jobs=${JOBS:-$(nproc)}
triple=i686-w64-mingw32

for tool in dpkg-source make $triple-g++; do
    command -v "$tool" >/dev/null || { echo "build-qt.sh: $tool is missing" >&2; exit 1; }
done
# The libraries must use the thread model of the program: std::thread.
$triple-g++ -v 2>&1 | grep -q '^Thread model: posix' ||
    { echo "build-qt.sh: $triple-g++ has not the posix thread model; see update-alternatives" >&2; exit 1; }

work=$(mktemp -d "${TMPDIR:-/tmp}/ostrel-qt.XXXXXX")
trap 'rm -rf "$work"' EXIT

fetch_debian_source qtbase-opensource-src "$work"
cd "$work"
dpkg-source -x qtbase-opensource-src_5.15.*.dsc source >/dev/null

# Accessibility and tablet events need headers that Debian leaves out of the source package.
mkdir build
cd build
../source/configure -prefix "$prefix" -opensource -confirm-license -release -shared -silent \
    -xplatform win32-g++ -device-option CROSS_COMPILE=$triple- \
    -nomake examples -nomake tests \
    -no-opengl -no-feature-accessibility -no-feature-tabletevent \
    -no-dbus -no-icu -no-openssl -no-feature-network -no-feature-sql -no-feature-concurrent \
    -qt-zlib -qt-pcre -qt-libpng -qt-libjpeg -qt-freetype
make -s -j"$jobs"
make -s install
debian_source_version "$work" qtbase-opensource-src >"$prefix/debian-source"
