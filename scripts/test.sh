#!/usr/bin/env bash
# Quick start, second command: install what is missing, then build and run
# the whole suite twice — a plain optimised build and one under
# AddressSanitizer + UndefinedBehaviorSanitizer — then the threads test
# under ThreadSanitizer and 120,000 inputs of the libFuzzer target. The
# benchmarks are built in the plain build so that they keep compiling; they
# are not run here.
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
echo "=== tsan build (threads test)"
cmake --preset tsan >/dev/null
cmake --build --preset tsan -j"$jobs"
ctest --preset tsan
echo "=== fuzz (120000 inputs)"
scripts/fuzz.sh --runs 120000
