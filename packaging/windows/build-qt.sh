#!/bin/bash
# build-qt.sh DIR
# Builds Qt for 32-bit Windows (mingw) from Debian's source package into DIR, which is then a QT_WINDOWS_ROOT.
# Takes about half an hour of one processor; nothing of the system's package configuration is changed.
# Needs: apt with a reachable Debian archive, dpkg-dev, g++-mingw-w64-i686-posix, make, python3, perl.
set -euo pipefail

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

# The archive's source index, in a state folder of our own.
mkdir -p "$work/lists/partial" "$work/cache/archives/partial" "$work/sources.d"
for file in /etc/apt/sources.list.d/*.sources; do
    [ -e "$file" ] && sed 's/^Types:.*/Types: deb-src/' "$file" >"$work/sources.d/$(basename "$file")"
done
[ -e /etc/apt/sources.list ] && sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$work/sources.list"
apt=(apt-get -qq -o "Dir::Etc::sourcelist=$work/sources.list" -o "Dir::Etc::sourceparts=$work/sources.d"
     -o "Dir::State::lists=$work/lists" -o "Dir::Cache=$work/cache" -o APT::Sandbox::User=root)
cd "$work"
"${apt[@]}" update
"${apt[@]}" source --download-only qtbase-opensource-src
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
# For the notice that goes with the libraries: qtbase-opensource-src and the whole version.
(cd "$work" && sed -n 's/^Source: //p; s/^Version: //p' qtbase-opensource-src_5.15.*.dsc | paste -sd' ') \
    >"$prefix/debian-source"
