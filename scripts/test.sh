#!/usr/bin/env bash
# Quick start, second command: install what is missing, then build and run
# the whole suite twice — a plain optimised build and one under
# AddressSanitizer + UndefinedBehaviorSanitizer — then the library's tests
# in a build without the vector fast paths, the threads test
# under ThreadSanitizer and 120,000 inputs of the libFuzzer target. The
# benchmarks are built in the plain build so that they keep compiling; they
# are not run here.
# Last, the suite for 64-bit ARM under qemu-user (scripts/cross-test.sh
# aarch64; 1 to 4.5 minutes from scratch on 2 cores), left out with a
# message when the run has already taken more than PIXMILL_CROSS_TEST_BUDGET
# seconds (default 900), so that the whole stays near a quarter of an hour.
# PIXMILL_CROSS_TEST="aarch64 armhf windows" picks other legs; "" none.
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
echo "=== plain build without Highway (PIXMILL_SIMD=OFF): the library's tests"
cmake -S . -B build/nosimd -DPIXMILL_SIMD=OFF -DPIXMILL_BUILD_TOOLS=OFF -DPIXMILL_BUILD_GSTREAMER=OFF \
      -DPIXMILL_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/nosimd -j"$jobs"
ctest --test-dir build/nosimd -j"$jobs" --output-on-failure
echo "=== tsan build (threads test)"
cmake --preset tsan >/dev/null
cmake --build --preset tsan -j"$jobs"
ctest --preset tsan
echo "=== fuzz (120000 inputs)"
scripts/fuzz.sh --runs 120000
cross=${PIXMILL_CROSS_TEST-aarch64}
budget=${PIXMILL_CROSS_TEST_BUDGET-900}
if [ -n "$cross" ] && ((SECONDS > budget)); then
  echo "=== cross tests ($cross) left out: ${SECONDS} s gone, over the ${budget} s budget"
elif [ -n "$cross" ]; then
  echo "=== cross tests: $cross"
  read -r -a cross_targets <<<"$cross"
  scripts/cross-test.sh "${cross_targets[@]}"
fi
