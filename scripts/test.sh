#!/usr/bin/env bash
# Quick start, second command: install what is missing, then build and run
# the whole suite twice — a plain optimised build and one under
# AddressSanitizer + UndefinedBehaviorSanitizer. The benchmarks are built in
# the plain build so that they keep compiling; they are not run here.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
jobs=$(nproc)
for preset in default sanitize; do
  echo "=== $preset build"
  extra=()
  [ "$preset" = default ] && extra=(-DPIXMILL_BUILD_BENCH=ON)
  cmake --preset "$preset" "${extra[@]}" >/dev/null
  cmake --build --preset "$preset" -j"$jobs"
  ctest --preset "$preset" -j"$jobs"
done
