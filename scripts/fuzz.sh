#!/usr/bin/env bash
# Builds the libFuzzer target (preset fuzz: clang with AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs it on both cores:
#   scripts/fuzz.sh [SECONDS]     for that long (default 60), growing the
#                                 corpus in build/fuzz/corpus
#   scripts/fuzz.sh --runs N      for N inputs in all, from seed 1, no corpus
#                                 (what scripts/test.sh does)
# A failing input is saved as build/fuzz/crash-*; rerun it with
# build/fuzz/fuzz/pixmill_fuzz FILE.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j"$(nproc)" >/dev/null
fuzzer=$PWD/build/fuzz/fuzz/pixmill_fuzz
cd build/fuzz
workers=$(nproc)
if [ "${1:-}" = "--runs" ]; then
  runs=${2:?--runs needs a count}
  # libFuzzer's -runs counts per process: split the count between workers.
  pids=()
  for ((i = 0; i < workers; i++)); do
    "$fuzzer" -seed=$((i + 1)) -runs=$(((runs + workers - 1) / workers)) -print_final_stats=1 \
      >"fuzz-$i.log" 2>&1 &
    pids+=($!)
  done
  status=0
  for ((i = 0; i < workers; i++)); do
    wait "${pids[$i]}" || { status=1; cat "fuzz-$i.log" >&2; }
    grep -E '^stat::(number_of_executed_units|average_exec_per_sec)' "fuzz-$i.log" | sed "s/^/worker $i: /"
  done
  exit $status
fi
mkdir -p corpus
exec "$fuzzer" -max_total_time="${1:-60}" -jobs="$workers" -workers="$workers" corpus
