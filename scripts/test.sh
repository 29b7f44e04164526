#!/usr/bin/env bash
# Quick start, second command: install what is missing, then build and run
# the whole suite twice — a plain optimised build and one under
# AddressSanitizer + UndefinedBehaviorSanitizer — then the threads test
# under ThreadSanitizer and 120,000 inputs of the libFuzzer target. The
# benchmarks are built in the plain build so that they keep compiling; they
# are not run here.
# PIXMILL_CROSS_TEST="aarch64 [armhf] [windows]" then runs scripts/cross-test.sh
# for those targets (the suite under qemu-user, the DLL under wine64);
# with PIXMILL_CROSS_TEST_BUDGET=S they are left out, saying so, when the run
# has already taken more than S seconds less 6 minutes (the aarch64 leg's
# time from scratch on 2 cores is 1 to 4.5).
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
if [ -n "${PIXMILL_CROSS_TEST:-}" ] && [ -n "${PIXMILL_CROSS_TEST_BUDGET:-}" ] &&
   ((SECONDS > PIXMILL_CROSS_TEST_BUDGET - 360)); then
  echo "=== cross tests ($PIXMILL_CROSS_TEST) left out: ${SECONDS} s gone of a ${PIXMILL_CROSS_TEST_BUDGET} s budget"
elif [ -n "${PIXMILL_CROSS_TEST:-}" ]; then
  echo "=== cross tests: $PIXMILL_CROSS_TEST"
  read -r -a cross_targets <<<"$PIXMILL_CROSS_TEST"
  scripts/cross-test.sh "${cross_targets[@]}"
fi
