#!/usr/bin/env bash
# Fuzz smoke run of the model archive readers: configures and builds the native-fuzz preset (clang, libFuzzer, ASan
# and UBSan), writes a seed corpus from the tests' sample model with the fuzzer itself, then runs LxModelDataFuzzer
# for 15 seconds. Fails on any crash, hang (10 s per input), leak or sanitizer report.
#   LUMEX_FUZZ_BUILD_DIR   build folder (default build/native-fuzz)
#   LUMEX_FUZZ_SECONDS     run time (default 15)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

BUILD=${LUMEX_FUZZ_BUILD_DIR:-build/native-fuzz}
SECONDS_TO_RUN=${LUMEX_FUZZ_SECONDS:-15}

cmake --preset native-fuzz -B "$BUILD" >/dev/null
cmake --build "$BUILD" --target LxModelDataFuzzer >/dev/null
FUZZER="$PWD/$BUILD/bin/LxModelDataFuzzer"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/corpus" "$work/seeds"
"$FUZZER" -lumex_write_seeds="$work/seeds" >"$work/seeds.log" 2>&1 || { cat "$work/seeds.log"; exit 1; }
[ "$(ls "$work/seeds" | wc -l)" -ge 8 ] || { echo "model-fuzz: seed corpus incomplete"; exit 1; }

# Findings (crash-*, leak-*, timeout-*) are written to the work folder and reported below.
if ! (cd "$work" && "$FUZZER" -max_total_time="$SECONDS_TO_RUN" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
      -print_final_stats=1 corpus seeds) >"$work/fuzz.log" 2>&1; then
  tail -n 60 "$work/fuzz.log"
  ls "$work" | grep -E '^(crash|leak|timeout|oom)-' || true
  echo "model-fuzz: FAILED"
  exit 1
fi
grep -E '^stat::number_of_executed_units|^Done' "$work/fuzz.log" || tail -n 3 "$work/fuzz.log"
echo "model-fuzz: no findings in $SECONDS_TO_RUN s"
