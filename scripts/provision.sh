#!/usr/bin/env bash
# Makes a Debian 12 machine (run as root) ready for every build lane of Lumex:
#   - host packages for the native lane (compilers, flex/bison, Lua, minizip, libpng, GoogleTest, benchmarks,
#     clang for libFuzzer and TSan, OpenSSL as the MD5 baseline, ccache);
#   - the mingw-w64 posix cross toolchain and static Lua 5.1, minizip and libpng built from Debian's own sources
#     into $LUMEX_CACHE/mingw;
#   - a Debian 13 root with Wine 10, lavapipe and Xvfb in $LUMEX_CACHE/trixie, with a booted Wine prefix.
# Every step checks its own stamp first, so a second run changes nothing and takes seconds.
# Usage: provision.sh [native|windows|all]   (default: all)
set -euo pipefail

LANES=${1:-all}
CACHE=${LUMEX_CACHE:-/var/cache/lumex}
HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
MINGW_PREFIX=$CACHE/mingw
ROOT=$CACHE/trixie
export DEBIAN_FRONTEND=noninteractive

log() { printf '[provision] %s\n' "$*"; }
die() { printf '[provision] FAILED: %s\n' "$*" >&2; exit 1; }

[ "$(id -u)" = 0 ] || die "must run as root (it installs packages and builds a chroot)"
mkdir -p "$CACHE"

# The mirror of the existing apt sources, reused for deb-src and for the trixie root.
apt_mirror() {
  local m
  m=$(grep -h -E '^URIs:' /etc/apt/sources.list.d/*.sources 2>/dev/null | awk '{print $2}' \
        | grep -v -E 'security|google|nodesource' | head -n1 || true)
  [ -n "$m" ] || m=$(grep -h -E '^deb ' /etc/apt/sources.list 2>/dev/null | awk '{print $2}' \
        | grep -v -E 'security' | head -n1 || true)
  echo "${m:-http://deb.debian.org/debian}"
}

APT_UPDATED=0
apt_install() {
  local missing=()
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  log "installing: ${missing[*]}"
  if [ $APT_UPDATED = 0 ]; then apt-get update -qq || apt-get update; APT_UPDATED=1; fi
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

native_lane() {
  apt_install build-essential cmake ninja-build pkg-config ccache git flex bison \
    liblua5.1-0-dev libminizip-dev zlib1g-dev libpng-dev libssl-dev \
    googletest libgtest-dev libgmock-dev libbenchmark-dev \
    clang libclang-rt-14-dev clang-format zip unzip python3
}

# --- Windows lane: cross toolchain and static third-party libraries --------------------------------------------
mingw_libs() {
  apt_install g++-mingw-w64-x86-64-posix libz-mingw-w64-dev dpkg-dev xz-utils cmake
  local stamp=$MINGW_PREFIX/.stamp-v1
  [ -f "$stamp" ] && return 0
  log "building Lua 5.1, minizip and libpng for mingw into $MINGW_PREFIX"
  local src=/etc/apt/sources.list.d/lumex-deb-src.sources
  if [ ! -f "$src" ]; then
    printf 'Types: deb-src\nURIs: %s\nSuites: bookworm bookworm-updates\nComponents: main\nSigned-By: /usr/share/keyrings/debian-archive-keyring.gpg\n' \
      "$(apt_mirror)" >"$src"
    apt-get update -qq
  fi
  local work=$CACHE/src
  rm -rf "$work" "$MINGW_PREFIX"
  mkdir -p "$work" "$MINGW_PREFIX/lib" "$MINGW_PREFIX/include"
  (cd "$work" && apt-get source -qq lua5.1/bookworm minizip/bookworm libpng1.6/bookworm >/dev/null 2>&1) \
    || (cd "$work" && apt-get source lua5.1/bookworm minizip/bookworm libpng1.6/bookworm)
  local CC=x86_64-w64-mingw32-gcc-posix AR=x86_64-w64-mingw32-ar
  local zinc=/usr/x86_64-w64-mingw32/include

  # Lua 5.1: the library sources only (no interpreter, no compiler, no print.c).
  local lua
  lua=$(find "$work" -maxdepth 1 -type d -name 'lua5.1-*' | head -n1)
  mkdir -p "$work/lua-obj"
  for f in "$lua"/src/*.c; do
    case $(basename "$f") in lua.c | luac.c | print.c) continue ;; esac
    $CC -O2 -c "$f" -o "$work/lua-obj/$(basename "${f%.c}").o"
  done
  $AR rcs "$MINGW_PREFIX/lib/liblua5.1.a" "$work"/lua-obj/*.o
  mkdir -p "$MINGW_PREFIX/include/lua5.1"
  cp "$lua"/src/lua.h "$lua"/src/luaconf.h "$lua"/src/lualib.h "$lua"/src/lauxlib.h "$MINGW_PREFIX/include/lua5.1/"

  # minizip: reader, writer and the Win32 file layer.
  local mz
  mz=$(find "$work" -maxdepth 1 -type d -name 'minizip-*' | head -n1)
  local mzdir=$mz
  [ -f "$mz/unzip.c" ] || mzdir=$(dirname "$(find "$mz" -name unzip.c | head -n1)")
  mkdir -p "$work/mz-obj" "$MINGW_PREFIX/include/minizip"
  for f in ioapi.c unzip.c zip.c iowin32.c; do
    $CC -O2 -I"$zinc" -c "$mzdir/$f" -o "$work/mz-obj/${f%.c}.o"
  done
  $AR rcs "$MINGW_PREFIX/lib/libminizip.a" "$work"/mz-obj/*.o
  cp "$mzdir"/ioapi.h "$mzdir"/unzip.h "$mzdir"/zip.h "$mzdir"/iowin32.h "$MINGW_PREFIX/include/minizip/"
  cp "$mzdir"/ioapi.h "$mzdir"/unzip.h "$mzdir"/zip.h "$mzdir"/iowin32.h "$MINGW_PREFIX/include/"

  # libpng with its own CMake, static, against the static zlib.
  local png
  png=$(find "$work" -maxdepth 1 -type d -name 'libpng1.6-*' | head -n1)
  cmake -S "$png" -B "$work/png-build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_C_COMPILER=$CC -DCMAKE_RC_COMPILER=x86_64-w64-mingw32-windres \
    -DCMAKE_FIND_ROOT_PATH=/usr/x86_64-w64-mingw32 -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY \
    -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY -DCMAKE_FIND_ROOT_PATH_MODE_PROGRAM=NEVER \
    -DZLIB_USE_STATIC_LIBS=ON -DPNG_SHARED=OFF -DPNG_STATIC=ON -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF \
    -DPNG_TOOLS=OFF -DSKIP_INSTALL_PROGRAMS=ON -DCMAKE_INSTALL_PREFIX="$MINGW_PREFIX" >/dev/null
  cmake --build "$work/png-build" >/dev/null
  cmake --install "$work/png-build" >/dev/null
  rm -rf "$work"
  touch "$stamp"
}

# --- Windows lane: the Debian 13 root that runs the tests ------------------------------------------------------
trixie_root() {
  apt_install debootstrap
  if [ ! -f "$ROOT/.stamp-base" ]; then
    log "debootstrap trixie into $ROOT (a few minutes)"
    rm -rf "$ROOT"
    debootstrap --variant=minbase --include=ca-certificates trixie "$ROOT" "$(apt_mirror)" >/dev/null
    touch "$ROOT/.stamp-base"
  fi
  if [ ! -f "$ROOT/.stamp-wine" ]; then
    log "installing Wine, lavapipe and Xvfb in the trixie root"
    "$HERE/wine-session.sh" mount-base
    trap '"$HERE/wine-session.sh" umount-base' EXIT
    chroot "$ROOT" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive \
      sh -c 'apt-get update -qq && apt-get install -y -qq --no-install-recommends wine wine64 mesa-vulkan-drivers libvulkan1 xvfb xauth >/dev/null'
    touch "$ROOT/.stamp-wine"
    "$HERE/wine-session.sh" umount-base
    trap - EXIT
  fi
  if [ ! -f "$ROOT/.stamp-prefix" ]; then
    log "booting the Wine prefix"
    "$HERE/wine-session.sh" boot-prefix
    touch "$ROOT/.stamp-prefix"
  fi
}

case $LANES in
  native) native_lane ;;
  windows) mingw_libs; trixie_root ;;
  all) native_lane; mingw_libs; trixie_root ;;
  *) die "unknown lane '$LANES' (native, windows or all)" ;;
esac
log "ready ($LANES)"
