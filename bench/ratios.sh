#!/usr/bin/env bash
# Runs the benchmark suite and prints a ratio table: for each job and size,
# every implementation's median CPU time and that time divided by the time
# of memcpy, of libyuv and of swscale measured in the same run (below 1 is
# faster than the reference). Repetitions are interleaved at random so that
# a noisy machine hurts every implementation alike; still, read the ratios
# as rough figures.
#
# Usage: bench/ratios.sh [path/to/pixmill_bench] [benchmark flags...]
#   e.g. bench/ratios.sh build/bench/bench/pixmill_bench --benchmark_filter=rotate
set -euo pipefail
bin=build/bench/bench/pixmill_bench
if [ $# -gt 0 ] && [ "${1#-}" = "$1" ]; then
  bin=$1
  shift
fi
if [ ! -x "$bin" ]; then
  echo "ratios.sh: no benchmark program at $bin (build it with -DPIXMILL_BUILD_BENCH=ON)" >&2
  exit 1
fi

"$bin" --benchmark_repetitions=5 --benchmark_min_time=0.1 \
       --benchmark_enable_random_interleaving=true \
       --benchmark_report_aggregates_only=true --benchmark_format=csv "$@" |
awk -F, '
  function us(t, unit) { return unit == "ns" ? t / 1000 : unit == "ms" ? t * 1000 : unit == "s" ? t * 1e6 : t }
  function ratio(t, ref) { return ref > 0 ? sprintf("%.2f", t / ref) : "-" }
  $1 ~ /_median"?$/ {
    name = $1; gsub(/"/, "", name); sub(/_median$/, "", name)
    n = split(name, part, "/"); who = part[n]
    group = substr(name, 1, length(name) - length(who) - 1)
    groups[group] = groups[group] SUBSEP who
    time[group, who] = us($4, $5)
    kind = who == "memcpy" ? "memcpy" : substr(who, 1, index(who, ":") - 1)
    # the reference of a library is its alphabetically first entry
    if (kind != "pixmill" && (!((group, kind) in refname) || who < refname[group, kind])) {
      refname[group, kind] = who; ref[group, kind] = time[group, who]
    }
  }
  END {
    rank["memcpy"] = 0; rank["pixmill"] = 1; rank["libyuv"] = 2; rank["swscale"] = 3
    for (group in groups) {
      k = split(substr(groups[group], 2), list, SUBSEP)
      for (i = 1; i <= k; ++i) {
        who = list[i]; t = time[group, who]
        kind = who == "memcpy" ? "memcpy" : substr(who, 1, index(who, ":") - 1)
        printf "%s\t%d\t%s\t%.1f\t%s\t%s\t%s\n", group, rank[kind], who, t,
               ratio(t, ref[group, "memcpy"]), ratio(t, ref[group, "libyuv"]), ratio(t, ref[group, "swscale"])
      }
    }
  }' | sort -t"$(printf '\t')" -k1,1 -k2,2n -k3,3 |
awk -F'\t' '
  BEGIN { printf "%-40s %-42s %10s %8s %8s %8s\n", "job/size", "implementation", "median us", "/memcpy", "/libyuv", "/swscale" }
  { printf "%-40s %-42s %10s %8s %8s %8s\n", ($1 == last ? "" : $1), $3, $4, $5, $6, $7; last = $1 }'
