#!/bin/sh
# Renders ostrel.svg to ostrel.png and ostrel.ico, which are kept in the tree so that a build needs neither
# rsvg-convert (librsvg2-bin) nor icotool (icoutils).
set -eu
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for size in 16 20 24 32 40 48 64 128 256; do
    rsvg-convert -w $size -h $size ostrel.svg -o "$work/$size.png"
done
cp "$work/256.png" ostrel.png
cd "$work"
icotool -c -o icon.ico 16.png 20.png 24.png 32.png 40.png 48.png 64.png 128.png -r 256.png
cd - >/dev/null
cp "$work/icon.ico" ostrel.ico
