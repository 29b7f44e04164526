#!/usr/bin/env bash
# Times each pixmill GStreamer element beside the stock element (or chain)
# that does the same job, in one run, and prints the ratio (below 1: pixmill
# is faster). One frame from videotestsrc is repeated by imagefreeze, so the
# source costs next to nothing; the time of the same pipeline with `identity`
# in place of the element is subtracted from both sides. Repetitions are
# interleaved and the fastest of each is kept; on a busy machine read the
# ratios as rough figures. videoflip is driven through video-direction: its
# older `method` property is not applied in GStreamer 1.22's gst-launch-1.0.
#
# Usage: bench/gst_ratios.sh [plugin directory] [frames] [repetitions]
#   e.g. bench/gst_ratios.sh build/default/gstreamer 300 5
set -euo pipefail
plugins=${1:-build/default/gstreamer}
frames=${2:-300}
reps=${3:-5}
if [ ! -e "$plugins/libgstpixmill.so" ]; then
  echo "gst_ratios.sh: no libgstpixmill.so in $plugins (build with PIXMILL_BUILD_GSTREAMER=ON)" >&2
  exit 1
fi
export GST_PLUGIN_PATH=$(cd "$plugins" && pwd)
export GST_REGISTRY=${TMPDIR:-/tmp}/pixmill-gst-bench-$$.bin
trap 'rm -f "$GST_REGISTRY"' EXIT

# Seconds a pipeline runs, from gst-launch-1.0's own report (start-up excluded).
run() {
  local out
  out=$(gst-launch-1.0 $1 2>&1) || { echo "gst_ratios.sh: pipeline failed: $1" >&2; echo "$out" >&2; exit 1; }
  sed -n 's/.*Execution ended after \([0-9]*\):\([0-9]*\):\([0-9.]*\).*/\1 \2 \3/p' <<<"$out" |
    awk '{ printf "%.6f\n", $1 * 3600 + $2 * 60 + $3 }'
}

# job | input caps | pixmill element(s) | stock element(s) | output caps
jobs=(
  "I420 to RGB16|format=I420,width=1280,height=720|pixmillconvert|videoconvert|format=RGB16"
  "I420 to RGB16, BT.709|format=I420,width=1280,height=720|pixmillconvert matrix=bt709|videoconvert|format=RGB16"
  "I420 to RGB16 turned 90|format=I420,width=1280,height=720|pixmillconvert rotation=90|videoflip video-direction=90r ! videoconvert|format=RGB16"
  "I420 to RGB|format=I420,width=1280,height=720|pixmillconvert|videoconvert|format=RGB"
  "I420 to BGR|format=I420,width=1280,height=720|pixmillconvert|videoconvert|format=BGR"
  "Y42B to BGR|format=Y42B,width=1280,height=720|pixmillconvert|videoconvert|format=BGR"
  "YUY2 to I420|format=YUY2,width=1280,height=720|pixmillconvert|videoconvert|format=I420"
  "RGB16 to I420|format=RGB16,width=1280,height=720|pixmillconvert|videoconvert|format=I420"
  "BGR to I420|format=BGR,width=1280,height=720|pixmillconvert|videoconvert|format=I420"
  "I420 scale 2:1|format=I420,width=1280,height=720|pixmillscale|videoscale|width=640,height=360"
  "I420 scale 4:3|format=I420,width=1280,height=720|pixmillscale|videoscale|width=960,height=540"
  "I420 scale bilinear|format=I420,width=1280,height=720|pixmillscale|videoscale|width=800,height=450"
  "I420 scale 1:2|format=I420,width=640,height=360|pixmillscale|videoscale|width=1280,height=720"
  "RGB16 scale bilinear|format=RGB16,width=1280,height=720|pixmillscale|videoscale|width=800,height=450"
  "I420 flip clockwise|format=I420,width=1280,height=720|pixmillflip method=clockwise|videoflip video-direction=90r|format=I420"
  "I420 flip rotate-180|format=I420,width=1280,height=720|pixmillflip method=rotate-180|videoflip video-direction=180|format=I420"
  "I420 flip horizontal|format=I420,width=1280,height=720|pixmillflip method=horizontal-flip|videoflip video-direction=horiz|format=I420"
  "GRAY8 flip clockwise|format=GRAY8,width=1280,height=720|pixmillflip method=clockwise|videoflip video-direction=90r|format=GRAY8"
)

least() { awk -v x="$1" -v y="$2" 'BEGIN { print (x == "inf" || y < x) ? y : x }'; }

pipeline() { # input caps, element(s), output caps
  echo "videotestsrc num-buffers=1 pattern=smpte ! video/x-raw,$1 ! imagefreeze num-buffers=$frames ! $2" \
       "! video/x-raw,$3 ! fakesink sync=false"
}

printf "%-26s %10s %10s %8s\n" "job ($frames frames)" "pixmill ms" "stock ms" "ratio"
for job in "${jobs[@]}"; do
  IFS='|' read -r name caps mine stock outcaps <<<"$job"
  base=inf; a=inf; b=inf
  for ((i = 0; i < reps; ++i)); do
    # the baseline keeps the input caps; only the element's work differs
    t0=$(run "$(pipeline "$caps" identity "$caps")")
    t1=$(run "$(pipeline "$caps" "$mine" "$outcaps")")
    t2=$(run "$(pipeline "$caps" "$stock" "$outcaps")")
    base=$(least "$base" "$t0")
    a=$(least "$a" "$t1")
    b=$(least "$b" "$t2")
  done
  awk -v n="$name" -v base="$base" -v a="$a" -v b="$b" 'BEGIN {
    ma = (a - base) * 1000; mb = (b - base) * 1000
    if (ma < 0) ma = 0
    printf "%-26s %10.1f %10.1f %8s\n", n, ma, mb, (mb > 0 ? sprintf("%.2f", ma / mb) : "-")
  }'
done
