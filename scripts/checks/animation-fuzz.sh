#!/usr/bin/env bash
# Fuzz smoke run of the animation readers: configures and builds the native-fuzz preset (clang, libFuzzer, ASan and
# UBSan), writes a seed corpus of valid curve streams and animation-set manifests (the fuzzer's --write-seeds), then
# runs LxCurveFuzzer for 15 seconds. Fails on any crash, hang (10 s per input), leak or sanitizer report.
#   LUMEX_FUZZ_BUILD_DIR   build folder (default build/native-fuzz)
#   LUMEX_FUZZ_SECONDS     run time (default 15)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

BUILD=${LUMEX_FUZZ_BUILD_DIR:-build/native-fuzz}
SECONDS_TO_RUN=${LUMEX_FUZZ_SECONDS:-15}

cmake --preset native-fuzz -B "$BUILD" >/dev/null
cmake --build "$BUILD" --target LxCurveFuzzer >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/corpus" "$work/seeds"
"$BUILD/bin/LxCurveFuzzer" --write-seeds="$work/seeds" >/dev/null 2>&1
if [ -z "$(ls -A "$work/seeds")" ]; then
  echo "animation-fuzz: no seeds written"
  exit 1
fi

# Findings (crash-*, leak-*, timeout-*) are written to the work folder and reported below.
if ! (cd "$work" && "$OLDPWD/$BUILD/bin/LxCurveFuzzer" -max_total_time="$SECONDS_TO_RUN" -timeout=10 \
      -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 corpus seeds) >"$work/fuzz.log" 2>&1; then
  tail -n 60 "$work/fuzz.log"
  ls "$work" | grep -E '^(crash|leak|timeout|oom)-' || true
  echo "animation-fuzz: FAILED"
  exit 1
fi
grep -E '^stat::number_of_executed_units|^Done' "$work/fuzz.log" || tail -n 3 "$work/fuzz.log"
echo "animation-fuzz: no findings in $SECONDS_TO_RUN s"
