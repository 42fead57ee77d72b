#!/usr/bin/env bash
# Runs the Lumex demo from a fresh Debian 12 machine (as root): provisions what is missing, builds the library for
# Windows and installs it into a package folder, builds the native data tool (it turns the demo's text mesh into a
# model archive), builds the demo against the installed package, and runs it under Wine (lavapipe, Xvfb) for a
# fixed number of frames on a fixed clock. Screenshots, the report (frame statistics, objects drawn, GPU timers)
# and the log land in the output folder; the last lines printed say where and sum the run up.
#   scripts/run-demo.sh [--frames N] [--width W] [--height H] [--out DIR] [--shots A,B,...] [--watch]
#   scripts/run-demo.sh --interactive [--width W] [--height H] [--watch]
# Defaults: 120 frames at 640x480, screenshots of frames 1, 60 and 120, output in build/demo-output.
# --interactive runs in real time on your own X display ($DISPLAY) until the window is closed (Escape); keys move
# the camera (W/A/S/D/Q/E, mouse with a button held), F5 reloads. On Windows, run build/demo/app/LumexDemo.exe
# itself: without --frames it opens a window and runs until closed.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
REPO=$PWD
OUT=$REPO/build/demo-output
ARGS=()
FRAMES=120
INTERACTIVE=0
while [ $# -gt 0 ]; do
  case $1 in
    --out) OUT=$(realpath -m "$2"); shift 2 ;;
    --frames) FRAMES=$2; shift 2 ;;
    --width|--height|--shots|--step) ARGS+=("$1" "$2"); shift 2 ;;
    --interactive) INTERACTIVE=1; shift ;;
    --watch) ARGS+=("$1"); shift ;;
    -h|--help) sed -n '2,14p' "$0"; exit 0 ;;
    *) echo "unknown option: $1 (see --help)" >&2; exit 2 ;;
  esac
done

export CCACHE_DIR=${CCACHE_DIR:-${LUMEX_CACHE:-/var/cache/lumex}/ccache}
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$REPO} CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR:-true}
export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}
step() { printf '[demo] %s\n' "$*"; }
quiet() { # runs a build step, showing its output only when it fails
  local log; log=$(mktemp)
  if ! "$@" >"$log" 2>&1; then tail -n 40 "$log"; rm -f "$log"; step "FAILED: $*"; exit 1; fi
  rm -f "$log"
}

start=$(date +%s)
step "provisioning (packages, cross-built libraries, Wine root; seconds when already done)"
bash scripts/provision.sh all | sed 's/^/  /'

step "building the library for Windows (the first build takes several minutes)"
quiet cmake --preset windows
quiet cmake --build --preset windows --target LumexCoreD3D12
rm -rf build/demo/prefix
quiet cmake --install build/windows --prefix build/demo/prefix

step "building the data tool (native)"
quiet cmake --preset native
quiet cmake --build --preset native --target LxDataTool

step "building the demo against the installed package"
quiet cmake -S Demo -B build/demo/app -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE="$REPO/cmake/toolchain-mingw-w64-posix.cmake" \
  -DCMAKE_PREFIX_PATH="$REPO/build/demo/prefix" -DCMAKE_FIND_ROOT_PATH="$REPO/build/demo/prefix" \
  -DLUMEX_DATA_TOOL="$REPO/build/native/bin/LxDataTool"
quiet cmake --build build/demo/app

if [ $INTERACTIVE = 1 ]; then
  [ -n "${DISPLAY:-}" ] || { step "FAILED: --interactive needs an X display (\$DISPLAY is empty)"; exit 1; }
  export LUMEX_X_DISPLAY=$DISPLAY
  step "running the demo under Wine on display $DISPLAY (close the window or press Escape to end)"
else
  ARGS+=(--frames "$FRAMES")
  step "running the demo under Wine: $FRAMES frames on a fixed clock"
fi
rm -rf "$OUT"; mkdir -p "$OUT"
bash scripts/wine-session.sh start "$REPO/build/demo" "$OUT" >/dev/null
set +e
(cd build/demo/app && bash "$REPO/scripts/wine-session.sh" exec ./LumexDemo.exe --out "Z:$OUT" "${ARGS[@]}")
rc=$?
set -e
bash scripts/wine-session.sh stop "$REPO/build/demo" >/dev/null 2>&1 || true
step "output in $OUT ($(( $(date +%s) - start )) s in all)"
exit $rc
