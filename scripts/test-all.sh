#!/usr/bin/env bash
# Runs every test of every lane from a fresh Debian 12 machine (as root): provisions what is missing, then for each
# lane configures, builds and runs CTest, printing each lane's summary. Exits non-zero when any lane fails or
# cannot run. This is the README's test command and what CI runs.
#   scripts/test-all.sh [lane...]     (default: every lane)
set -uo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
DEFAULT_LANES="native native-asan native-tsan windows"
LANES=${*:-$DEFAULT_LANES}
export CCACHE_DIR=${CCACHE_DIR:-${LUMEX_CACHE:-/var/cache/lumex}/ccache}
# Hits across clones in different folders: paths below the checkout are hashed relative to it.
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$PWD} CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR:-true}
export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}

start=$(date +%s)
bash scripts/provision.sh all || { echo "FAILED: provisioning"; exit 1; }

declare -A result
order=()
failed=0
for lane in $LANES; do
  order+=("$lane")
  echo "=== lane $lane ==="
  log=$(mktemp)
  if ! cmake --preset "$lane" >"$log" 2>&1; then
    cat "$log"; result[$lane]="configure failed"; failed=1; rm -f "$log"; continue
  fi
  lane_start=$(date +%s)
  # The ThreadSanitizer lane runs only the executables labelled "tsan": build just those.
  targets=()
  [ "$lane" = native-tsan ] && targets=(--target lumex-tsan-tests)
  if ! cmake --build --preset "$lane" "${targets[@]}" >"$log" 2>&1; then
    tail -n 60 "$log"; result[$lane]="build failed"; failed=1; rm -f "$log"; continue
  fi
  rm -f "$log"
  ctest --preset "$lane" 2>&1 | tee "build/$lane/ctest-summary.txt" | grep -v -E '^ *(Start|[0-9]+/[0-9]+ Test) ' || true
  line=$(grep -E 'tests passed' "build/$lane/ctest-summary.txt" | tail -n 1)
  if [ -z "$line" ]; then result[$lane]="no test results"; failed=1
  elif ! echo "$line" | grep -q '^100% tests passed'; then result[$lane]="$line"; failed=1
  else result[$lane]="$line"; fi
  result[$lane]="${result[$lane]} ($(( $(date +%s) - lane_start )) s)"
done

# Extra checks that are not CTest lanes (fuzz smoke runs and the like) register here.
for check in scripts/checks/*.sh; do
  [ -f "$check" ] || continue
  name=$(basename "$check" .sh)
  order+=("$name")
  echo "=== check $name ==="
  check_start=$(date +%s)
  if bash "$check"; then result[$name]="passed"; else result[$name]="FAILED"; failed=1; fi
  result[$name]="${result[$name]} ($(( $(date +%s) - check_start )) s)"

done

echo
echo "=== summary ($(( $(date +%s) - start )) s) ==="
for k in "${order[@]}"; do printf '  %-14s %s\n' "$k" "${result[$k]}"; done
exit $failed
