#!/usr/bin/env bash
# Runs every benchmark of bench/ in both lanes and writes bench/REPORT.md, a table of every measured ratio against
# its aim with the date, the machine and this command. Provisions and builds what it needs (native preset with
# benchmarks; a Windows build with benchmarks in build/windows-bench). Run it on a quiet machine: the figures are
# ratios measured in one run, but a loaded machine still widens them.
#   scripts/run-benchmarks.sh [--repetitions N]   (default 3)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
REPO=$PWD
REPS=3
[ "${1:-}" = --repetitions ] && REPS=$2
export CCACHE_DIR=${CCACHE_DIR:-${LUMEX_CACHE:-/var/cache/lumex}/ccache}
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$REPO} CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR:-true}
export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}
step() { printf '[bench] %s\n' "$*"; }

bash scripts/provision.sh all | sed 's/^/  /'
step "building the native benchmarks"
cmake --preset native >/dev/null
cmake --build --preset native --target lumex-benchmarks >/dev/null
step "building the Windows benchmarks"
cmake --preset windows -B build/windows-bench -DLUMEX_BUILD_BENCH=ON -DLUMEX_BUILD_TESTS=OFF >/dev/null
cmake --build build/windows-bench --target lumex-benchmarks >/dev/null

bash scripts/wine-session.sh start "$REPO/build/windows-bench" >/dev/null
set +e
python3 bench/report.py --native-bin build/native/bin --windows-bin build/windows-bench/bin \
  --wine-runner "$REPO/scripts/wine-session.sh" --repetitions "$REPS" --command "bash scripts/run-benchmarks.sh"
rc=$?
set -e
bash scripts/wine-session.sh stop "$REPO/build/windows-bench" >/dev/null 2>&1 || true
step "report: $REPO/bench/REPORT.md"
exit $rc
