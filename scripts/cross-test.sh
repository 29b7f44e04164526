#!/usr/bin/env bash
# Runs the library on other CPUs and systems, not only builds it there:
#   aarch64, armhf  the library and the whole GoogleTest suite, built with
#                   Debian's cross compilers against GoogleTest built for the
#                   target from Debian's sources (/usr/src/googletest), run
#                   under qemu-user with the target's libraries (-L).
#   windows         the DLL (mingw-w64), checked to import only KERNEL32 and
#                   the C runtime, and tests/portability/export_checksums.c,
#                   which calls every export on fixed inputs, run under wine64.
# tests/portability/export_checksums.c also runs on each Linux target; every
# run's checksums must equal those of the same program built and run natively.
# The program's own tests (tests/tools) need the host's libpng and stay native,
# as do the GStreamer plugin's.
# Installs what is missing (as root). Work goes to build/cross-test/.
#
# Usage: scripts/cross-test.sh [aarch64] [armhf] [windows]   (default: all three)
set -euo pipefail
cd "$(dirname "$0")/.."

targets=("$@")
((${#targets[@]})) || targets=(aarch64 armhf windows)
packages=(cmake make gcc g++ googletest libhwy-dev)
for target in "${targets[@]}"; do
  case $target in
    aarch64) packages+=(g++-aarch64-linux-gnu qemu-user) ;;
    armhf) packages+=(g++-arm-linux-gnueabihf qemu-user) ;;
    windows) packages+=(g++-mingw-w64-x86-64 binutils-mingw-w64-x86-64 wine64) ;;
    *) echo "cross-test: unknown target '$target' (aarch64, armhf, windows)" >&2; exit 2 ;;
  esac
done
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  [ "$(id -u)" -eq 0 ] || { echo "cross-test: run as root to install ${missing[*]}" >&2; exit 1; }
  echo "cross-test: installing ${missing[*]}" >&2
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

root=build/cross-test
mkdir -p "$root"
jobs=2
library_only=(-DPIXMILL_BUILD_TESTS=OFF -DPIXMILL_BUILD_TOOLS=OFF -DPIXMILL_BUILD_EXAMPLES=OFF
              -DPIXMILL_BUILD_BENCH=OFF -DPIXMILL_BUILD_FUZZ=OFF -DPIXMILL_BUILD_GSTREAMER=OFF)
checksum_source=tests/portability/export_checksums.c
failures=0
summary=()

# Runs a command with its output in a log; on failure shows the log's end.
logged() { # log, command...
  local log=$1
  shift
  "$@" >>"$log" 2>&1 || { echo "  failed: $*"; tail -30 "$log" | sed 's/^/    /'; return 1; }
}

# The checksums of the native build on the plain code, which every other run
# must match, starting with the native build on its best vector target.
native_checksums() {
  local dir=$root/native
  mkdir -p "$dir"
  : >"$dir.log"
  logged "$dir.log" cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release "${library_only[@]}" &&
    logged "$dir.log" cmake --build "$dir" --target pixmill -j"$jobs" &&
    logged "$dir.log" gcc -std=c99 -O2 -Wall -Wextra -Werror -Iinclude "$checksum_source" \
      -L"$dir" -lpixmill -Wl,-rpath,"$PWD/$dir" -o "$dir/export_checksums" &&
    PIXMILL_CPU=scalar "$dir/export_checksums" >"$root/native.checksums" &&
    "$dir/export_checksums" >"$dir/checksums-best" &&
    echo -n "  native, PIXMILL_CPU unset against scalar:" && compare_checksums native "$dir/checksums-best"
}

compare_checksums() { # name, checksum file
  if diff -u "$root/native.checksums" "$2" >"$2.diff"; then
    echo " checksums of $(tail -1 "$2" | cut -d' ' -f1) exports equal the native run's"
  else
    echo "  checksums differ from the native run's:"
    sed 's/^/    /' "$2.diff"
    return 1
  fi
}

# GoogleTest, the library and its suite for a Linux target, run under qemu.
linux_leg() { # name, triplet, qemu
  local name=$1 triplet=$2 qemu=$3 dir=$root/$1
  local cross=(-DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR="${triplet%%-*}"
               -DCMAKE_C_COMPILER="$triplet-gcc" -DCMAKE_CXX_COMPILER="$triplet-g++")
  local emulator=("$qemu" -L "/usr/$triplet")
  mkdir -p "$dir"
  : >"$dir.log"
  if [ ! -f "$dir/gtest/.built" ]; then
    logged "$dir.log" cmake -S /usr/src/googletest -B "$dir/gtest-build" "${cross[@]}" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_INSTALL_PREFIX="$PWD/$dir/gtest" -DCMAKE_INSTALL_LIBDIR=lib -DBUILD_GMOCK=OFF &&
      logged "$dir.log" cmake --build "$dir/gtest-build" -j"$jobs" &&
      logged "$dir.log" cmake --install "$dir/gtest-build" && touch "$dir/gtest/.built" || return 1
  fi
  logged "$dir.log" cmake -S . -B "$dir/build" "${cross[@]}" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CROSSCOMPILING_EMULATOR="$(IFS=';'; echo "${emulator[*]}")" \
    -DGTest_DIR="$PWD/$dir/gtest/lib/cmake/GTest" \
    -DPIXMILL_BUILD_TOOLS=OFF -DPIXMILL_BUILD_EXAMPLES=OFF -DPIXMILL_BUILD_BENCH=OFF -DPIXMILL_BUILD_FUZZ=OFF \
    -DPIXMILL_BUILD_GSTREAMER=OFF &&
    logged "$dir.log" cmake --build "$dir/build" -j"$jobs" || return 1
  echo "  $(readelf -h "$dir/build/libpixmill.so" | sed -n "s/^ *Machine: *//p")"
  local started=$SECONDS ok=0 cpu
  ctest --test-dir "$dir/build" -j"$jobs" --output-on-failure >"$dir/ctest.log" 2>&1 && ok=1
  grep -E 'tests passed|tests failed' "$dir/ctest.log" | sed "s/^/  /;s/\$/ (under qemu, $((SECONDS - started)) s)/"
  # Family tests run once per vector target (name@NEON) and on the plain code.
  for cpu in $(grep -oE '@[A-Za-z0-9_]+ \.+ +Passed' "$dir/ctest.log" | sed 's/^@//;s/ .*//' | sort -u); do
    echo "  $(grep -cE "@$cpu \.+ +Passed" "$dir/ctest.log") tests passed with PIXMILL_CPU=$cpu"
  done
  ((ok)) || { grep -B40 -A20 'tests failed' "$dir/ctest.log" | sed 's/^/    /'; return 1; }
  logged "$dir.log" "$triplet-gcc" -std=c99 -O2 -Wall -Wextra -Werror -Iinclude "$checksum_source" \
    -L"$dir/build" -lpixmill -Wl,-rpath,"$PWD/$dir/build" -o "$dir/export_checksums" || return 1
  # The checksums on the best target and on the plain code.
  for cpu in best scalar; do
    PIXMILL_CPU=${cpu/best/} "${emulator[@]}" "$dir/export_checksums" >"$dir/checksums-$cpu" &&
      echo -n "  PIXMILL_CPU=${cpu/best/(unset)}:" && compare_checksums "$name" "$dir/checksums-$cpu" || return 1
  done
}

# The DLL, its imports, and the checksum program under wine64.
windows_leg() {
  local dir=$root/windows prefix=x86_64-w64-mingw32 imports extra wine
  mkdir -p "$dir"
  : >"$dir.log"
  logged "$dir.log" cmake -S . -B "$dir/build" -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
    -DCMAKE_BUILD_TYPE=Release "${library_only[@]}" &&
    logged "$dir.log" cmake --build "$dir/build" --target pixmill -j"$jobs" || return 1
  imports=$($prefix-objdump -p "$dir/build/libpixmill.dll" | sed -n 's/.*DLL Name: //p' | tr '\n' ' ')
  echo "  libpixmill.dll imports: $imports"
  extra=$(tr ' ' '\n' <<<"$imports" | grep -viE '^(kernel32\.dll|msvcrt\.dll|api-ms-win-crt-.*\.dll|)$' || true)
  [ -z "$extra" ] || { echo "  imports beyond KERNEL32 and the C runtime: $extra"; return 1; }
  logged "$dir.log" $prefix-gcc -std=c99 -O2 -Wall -Wextra -Werror -Iinclude "$checksum_source" \
    "$dir/build/libpixmill.dll.a" -o "$dir/export_checksums.exe" &&
    cp "$dir/build/libpixmill.dll" "$dir/" || return 1
  # Debian's wine64 keeps its loader off PATH (the wine package links it).
  # A private wine prefix; no Mono or Gecko install prompts.
  wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
  WINEPREFIX="$PWD/$dir/wine" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" \
    "$wine" "$dir/export_checksums.exe" 2>>"$dir.log" | tr -d '\r' >"$dir/checksums" || return 1
  echo -n "  under wine64:" && compare_checksums windows "$dir/checksums"
}

echo "=== native checksums"
native_checksums || { echo "  FAILED"; exit 1; }
for target in "${targets[@]}"; do
  echo "=== $target"
  started=$SECONDS
  case $target in
    aarch64) linux_leg aarch64 aarch64-linux-gnu qemu-aarch64 ;;
    armhf) linux_leg armhf arm-linux-gnueabihf qemu-arm ;;
    windows) windows_leg ;;
  esac && result=ok || { result=FAILED; failures=$((failures + 1)); }
  echo "  $result ($((SECONDS - started)) s)"
  summary+=("$target: $result in $((SECONDS - started)) s")
done
echo "=== summary"
printf '  %s\n' "${summary[@]}"
exit $((failures > 0))
