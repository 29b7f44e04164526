#!/usr/bin/env bash
# Quick start, second command: install what is missing, then build and run
# the whole suite twice — a plain optimised build and one under
# AddressSanitizer + UndefinedBehaviorSanitizer. The benchmarks are built in
# the plain build so that they keep compiling; they are not run here.
# PIXMILL_CROSS_TEST="aarch64 [armhf] [windows]" then runs scripts/cross-test.sh
# for those targets (the suite under qemu-user, the DLL under wine64).
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
if [ -n "${PIXMILL_CROSS_TEST:-}" ]; then
  echo "=== cross tests: $PIXMILL_CROSS_TEST"
  read -r -a cross_targets <<<"$PIXMILL_CROSS_TEST"
  scripts/cross-test.sh "${cross_targets[@]}"
fi
