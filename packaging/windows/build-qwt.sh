#!/bin/bash
# build-qwt.sh DIR
# Builds Qwt for 32-bit Windows (mingw) from Debian's source package into DIR, which is then a QWT_WINDOWS_ROOT.
# QT_WINDOWS_ROOT names the Qt that it is for, with its qmake. Nothing of the system's package configuration is changed.
# Needs: apt with a reachable Debian archive, dpkg-dev, g++-mingw-w64-i686-posix, make.
set -euo pipefail
. "$(dirname "$0")/debian-source.sh"

prefix=$(realpath -m "${1:?usage: build-qwt.sh DIR}")
jobs=${JOBS:-$(nproc)}
qmake=${QT_WINDOWS_ROOT:?names the Qt for Windows}/bin/qmake

for tool in dpkg-source make i686-w64-mingw32-g++ "$qmake"; do
    command -v "$tool" >/dev/null || { echo "build-qwt.sh: $tool is missing" >&2; exit 1; }
done

work=$(mktemp -d "${TMPDIR:-/tmp}/ostrel-qwt.XXXXXX")
trap 'rm -rf "$work"' EXIT

fetch_debian_source qwt "$work"
cd "$work"
dpkg-source -x qwt_6.1.*.dsc source >/dev/null
cd source

# Plots and widgets only: no SVG, no OpenGL, no MathML, no designer plugin, no concurrency.
for switch in QwtSvg QwtOpenGL QwtMathML QwtDesigner QwtExamples QwtPlayground QwtTests; do
    sed -i "s/^\( *QWT_CONFIG *+= *$switch\)\b/#\1/" qwtconfig.pri
done
sed -i '/dpkg-buildflags/d' qwtconfig.pri # the flags of this machine's own programs
sed -i '/QT *+= *concurrent/d' src/src.pri
sed -i '/#include <qtconcurrentrun.h>/d' src/*.cpp # QT_NO_QFUTURE leaves out what would need it
cd src
"$qmake" CONFIG+=release CONFIG-=debug_and_release DEFINES+=QT_NO_QFUTURE src.pro
make -s -j"$jobs" release # the project has both
cd ..

mkdir -p "$prefix"/{bin,lib,include/qwt}
# The import library names the DLL, so both keep the names that Debian's patches give them.
cp "$(find . -name qwt-qt5.dll | head -1)" "$prefix/bin/"
cp "$(find . -name 'libqwt-qt5*.a' | head -1)" "$prefix/lib/libqwt-qt5.dll.a"
cp src/qwt*.h "$prefix/include/qwt/"
cp COPYING "$prefix/"
debian_source_version "$work" qwt >"$prefix/debian-source"
