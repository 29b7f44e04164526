#!/usr/bin/env bash
# Quick start, first command: install what is missing, build, and run the
# command-line program on its built-in test frame.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake --preset default >/dev/null
cmake --build --preset default --target pixmill_cli -j"$(nproc)"
mkdir -p out
build/default/tools/pixmill demo out
