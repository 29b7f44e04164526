#!/usr/bin/env bash
# Installs what the build, the tests, the tools and the benchmarks need, on
# Debian or Ubuntu, as root. Idempotent: installs only what is missing.
set -euo pipefail
packages=(cmake make g++ pkg-config libgtest-dev libbenchmark-dev libpng-dev
          libyuv-dev libswscale-dev libavutil-dev ffmpeg binutils
          libhwy-dev clang libclang-rt-14-dev
          libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev gstreamer1.0-tools
          gstreamer1.0-plugins-base gstreamer1.0-plugins-good)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  if [ "$(id -u)" -ne 0 ]; then
    echo "pixmill: missing packages: ${missing[*]} (run as root to install them)" >&2
    exit 1
  fi
  echo "pixmill: installing ${missing[*]}" >&2
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
