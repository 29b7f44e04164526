#!/usr/bin/env bash
# Portability check: builds the library alone with Debian's cross compilers
# for 32-bit ARM, 64-bit ARM and 64-bit Windows (a DLL), then checks that each
# result exports exactly the names of include/pixmill.h, that the two names of
# the 4:2:2 to 24-bit operation share one address, and that the code sections
# COLORCON, YUV420to, YUV420TO and the table section CONSTANT exist, and
# that the DLL imports only KERNEL32 and the C runtime.
# Installs the cross compilers when they are missing (as root). Not part of CI.
#
# Usage: scripts/cross-build.sh [arm] [aarch64] [windows]   (default: all three)
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(cmake make binutils g++-arm-linux-gnueabihf g++-aarch64-linux-gnu g++-mingw-w64-x86-64)
installed=$(dpkg-query -W -f='${db:Status-Abbrev}\n' "${packages[@]}" 2>/dev/null | grep -c '^ii' || true)
if [ "$installed" -ne "${#packages[@]}" ]; then
  [ "$(id -u)" -eq 0 ] || { echo "cross-build: run as root to install ${packages[*]}" >&2; exit 1; }
  echo "cross-build: installing the cross compilers" >&2
  DEBIAN_FRONTEND=noninteractive apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${packages[@]}" >/dev/null
fi

header=include/pixmill.h
expected=$(grep -E '^PIXMILL_API ' "$header" | sed -E 's/^[^(]*[^A-Za-z0-9_]([A-Za-z_][A-Za-z0-9_]*)\(.*/\1/' | sort)
library_only=(-DCMAKE_BUILD_TYPE=Release -DPIXMILL_BUILD_TESTS=OFF -DPIXMILL_BUILD_TOOLS=OFF
              -DPIXMILL_BUILD_EXAMPLES=OFF -DPIXMILL_BUILD_BENCH=OFF -DPIXMILL_BUILD_FUZZ=OFF
              -DPIXMILL_BUILD_GSTREAMER=OFF)
failures=0

build() { # build directory, extra configure arguments...
  local dir=$1
  shift
  mkdir -p "$dir" # its log lies beside it, in build/
  cmake -S . -B "$dir" "${library_only[@]}" "$@" >"$dir.log" 2>&1 &&
    cmake --build "$dir" --target pixmill -j2 >>"$dir.log" 2>&1 ||
    { echo "  build failed, see $dir.log"; tail -20 "$dir.log"; return 1; }
}

# The exported names against the header, the alias pair at one address, and
# the section of each named body. Input: lines "name address section".
check_names() { # exports, library kind
  local exports=$1 got a b
  got=$(cut -d' ' -f1 <<<"$exports" | sort)
  if [ "$got" != "$expected" ]; then
    echo "  export mismatch (< header, > $2):"
    diff <(echo "$expected") <(echo "$got") | grep '^[<>]' | sed 's/^/    /'
    return 1
  fi
  echo "  $(wc -l <<<"$got") exports, as declared"
  a=$(awk '$1 == "gYUV422HPlanartoBGR888TopDown" { print $2 }' <<<"$exports")
  b=$(awk '$1 == "gYUV422HPlanartoRGB888TopDown" { print $2 }' <<<"$exports")
  if [ "$a" != "$b" ]; then
    echo "  gYUV422HPlanartoRGB888TopDown ($b) and gYUV422HPlanartoBGR888TopDown ($a) differ in address"
    return 1
  fi
  echo "  alias pair at one address: $a"
  for pair in gEmYUV420toRGB888TopDown=YUV420to gEmYUV420toRGB565TopDown=YUV420TO gEmRGB565toYUV420=COLORCON \
              gYUV422toRGB16Rotate=COLORCON; do
    if [ "$(awk -v n="${pair%=*}" '$1 == n { print $3 }' <<<"$exports")" != "${pair#*=}" ]; then
      echo "  ${pair%=*} does not lie in section ${pair#*=}"
      return 1
    fi
  done
  echo "  named bodies in COLORCON, YUV420to, YUV420TO"
}

# ELF: global defined symbols of the dynamic table, with their sections.
check_elf() { # triplet, name
  local triplet=$1 dir=build/cross-$2 lib exports
  build "$dir" -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR="${triplet%%-*}" \
    -DCMAKE_C_COMPILER="$triplet-gcc" -DCMAKE_CXX_COMPILER="$triplet-g++" || return 1
  lib=$(find "$dir" -maxdepth 1 -name 'libpixmill.so.*.*.*' | head -1)
  echo "  $(readelf -h "$lib" | sed -n 's/^ *Machine: *//p'), $(basename "$lib"), needs: $(readelf -d "$lib" | sed -n 's/.*Shared library: \[\(.*\)\]/\1/p' | tr '\n' ' ')"
  exports=$(awk 'NR == FNR { if ($1 ~ /^\[/) { sub(/\[ */, ""); sub(/\]/, ""); section[$1] = $2 } next }
                 ($5 == "GLOBAL" || $5 == "WEAK") && $7 != "UND" && $4 != "SECTION" { print $8, $2, section[$7] }' \
            <(readelf -S -W "$lib") <(readelf --dyn-syms -W "$lib"))
  check_names "$exports" "$2" &&
    cmake -DLIBRARY="$lib" -DOBJDUMP="$triplet-objdump" -P tests/frame/check_sections.cmake 2>&1 | sed 's/^-- /  /'
  return "${PIPESTATUS[0]}"
}

# PE: the export table of the DLL (objdump -p), each address placed in its
# section by the section headers (objdump -h).
check_dll() {
  local dir=build/cross-windows objdump=x86_64-w64-mingw32-objdump dll exports imports
  build "$dir" -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake || return 1
  dll=$dir/libpixmill.dll
  imports=$($objdump -p "$dll" | sed -n 's/.*DLL Name: //p' | tr '\n' ' ')
  echo "  $($objdump -f "$dll" | sed -n 's/.*file format //p'), $(basename "$dll"), imports: $imports"
  if grep -qviE '^(kernel32\.dll|msvcrt\.dll|api-ms-win-crt-.*\.dll|)$' < <(tr ' ' '\n' <<<"$imports"); then
    echo "  imports beyond KERNEL32 and the C runtime"
    return 1
  fi
  exports=$(awk '
    function hex(s,   v, i) { v = 0; s = tolower(s); for (i = 1; i <= length(s); ++i) v = v * 16 + index("0123456789abcdef", substr(s, i, 1)) - 1; return v }
    FNR == 1 { file++ }
    file == 1 && $1 ~ /^[0-9]+$/ && NF >= 7 { name[$1] = $2; start[$1] = hex($4); size[$1] = hex($3) }
    file == 2 && $1 == "ImageBase" { base = hex($2) }
    file == 2 && /^Export Address Table -- Ordinal Base/ { eat = 1; next }
    file == 2 && /\[Ordinal\/Name Pointer\] Table/ { names = 1; next }
    file == 2 && NF == 0 { eat = names = 0 }
    file == 2 && eat && /Export RVA/ { gsub(/[][]/, " "); rva[$1] = $4 }
    file == 2 && names { gsub(/[][]/, " "); at = base + hex(rva[$1]); where = "?"
                         for (s in name) if (at >= start[s] && at < start[s] + size[s]) where = name[s]
                         print $2, rva[$1], where }' \
    <($objdump -h "$dll") <($objdump -p "$dll"))
  check_names "$exports" DLL &&
    cmake -DLIBRARY="$dll" -DOBJDUMP="$objdump" -P tests/frame/check_sections.cmake 2>&1 | sed 's/^-- /  /'
  return "${PIPESTATUS[0]}"
}

targets=("$@")
((${#targets[@]})) || targets=(arm aarch64 windows)
for target in "${targets[@]}"; do
  echo "=== $target"
  case $target in
    arm) check_elf arm-linux-gnueabihf arm ;;
    aarch64) check_elf aarch64-linux-gnu aarch64 ;;
    windows) check_dll ;;
    *) echo "  unknown target (arm, aarch64, windows)"; false ;;
  esac && echo "  ok" || { echo "  FAILED"; failures=$((failures + 1)); }
done
exit $((failures > 0))
