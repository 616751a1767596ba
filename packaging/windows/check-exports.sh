#!/bin/bash
# check-exports.sh KESTRIX.DLL
# Fails unless the library exports exactly the ordinals of device/driver/kestrix/kestrixordinals.h, and no names.
set -euo pipefail
table=$(dirname "$0")/../../device/driver/kestrix/kestrixordinals.h
dump=$(i686-w64-mingw32-objdump -p "$1")

wanted=$(grep -oP '^ *X\(\K[0-9]+' "$table" | sort -n | xargs)
base=$(awk '/^Ordinal Base/ { print $3 }' <<<"$dump")
exported=$(awk -v base="$base" '
    /^Export Address Table/ { inside = 1; next }
    /^\[Ordinal\/Name Pointer\] Table/ { inside = 0 }
    inside && match($0, /\[ *[0-9]+\] \+base/) { split($0, part, /[][ \t]+/); print part[2] + base }' <<<"$dump" |
    sort -n | xargs)
names=$(awk '/^\[Ordinal\/Name Pointer\] Table/ { inside = 1; next } inside && /^$/ { inside = 0 } inside' <<<"$dump" |
    grep -c '\[' || true)

echo "$(basename "$1"): ordinals $exported, $names names"
[ "$exported" = "$wanted" ] || { echo "check-exports.sh: wanted the ordinals $wanted" >&2; exit 1; }
[ "$names" = 0 ] || { echo "check-exports.sh: wanted no names" >&2; exit 1; }
