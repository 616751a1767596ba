#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
set -euo pipefail
cd "$(dirname "$0")"
. packaging/prepare.sh

prepare
build release
ctest --preset release
