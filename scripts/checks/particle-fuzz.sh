#!/usr/bin/env bash
# Fuzz smoke run of the particle description language: configures and builds the native-fuzz preset (clang,
# libFuzzer, ASan and UBSan), then runs LxParticleFuzzer for 15 seconds from a seed corpus of the test particle
# files (valid ones and the error files), with the keyword dictionary fuzz/LxParticleFuzzer.dict. Fails on any
# crash, hang (10 s per input), leak or sanitizer report.
#   LUMEX_FUZZ_BUILD_DIR   build folder (default build/native-fuzz)
#   LUMEX_FUZZ_SECONDS     run time (default 15)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

BUILD=${LUMEX_FUZZ_BUILD_DIR:-build/native-fuzz}
SECONDS_TO_RUN=${LUMEX_FUZZ_SECONDS:-15}

cmake --preset native-fuzz -B "$BUILD" >/dev/null
cmake --build "$BUILD" --target LxParticleFuzzer >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/corpus" "$work/seeds"
find tests/data/particles -name '*.txt' | while read -r f; do
  cp "$f" "$work/seeds/$(echo "$f" | tr '/' '_')"
done

# Findings (crash-*, leak-*, timeout-*) are written to the work folder and reported below.
if ! (cd "$work" && "$OLDPWD/$BUILD/bin/LxParticleFuzzer" -dict="$OLDPWD/fuzz/LxParticleFuzzer.dict" \
      -max_total_time="$SECONDS_TO_RUN" -timeout=10 \
      -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 corpus seeds) >"$work/fuzz.log" 2>&1; then
  tail -n 60 "$work/fuzz.log"
  ls "$work" | grep -E '^(crash|leak|timeout|oom)-' || true
  echo "particle-fuzz: FAILED"
  exit 1
fi
grep -E '^stat::number_of_executed_units|^Done' "$work/fuzz.log" || tail -n 3 "$work/fuzz.log"
echo "particle-fuzz: no findings in $SECONDS_TO_RUN s"
