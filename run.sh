#!/usr/bin/env bash
# Installs what is missing, builds, and opens Ostrel on the simulated adapter (or the one OSTREL_DRIVER names).
# Without a display the same window goes off-screen on a short tour: open, receive, send, capture.
set -euo pipefail
cd "$(dirname "$0")"
. packaging/prepare.sh

prepare
if [ -n "${DISPLAY:-}" ]; then
    build release Ostrel
    exec build/release/Ostrel/Ostrel
elif [ -n "${WAYLAND_DISPLAY:-}" ]; then
    install_packages qtwayland5
    build release Ostrel
    exec build/release/Ostrel/Ostrel
fi
echo "No display: showing the window off-screen on a short tour."
build release ostrel_tour
# A tour must not put frames on a real bus.
OSTREL_DRIVER=${OSTREL_DRIVER:-simulated} QT_QPA_PLATFORM=offscreen exec build/release/Ostrel/ostrel_tour build/release/tour
