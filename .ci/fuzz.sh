#!/usr/bin/env bash
# Runs every libFuzzer target for a while (FUZZ_SECONDS, default 60) from its corpus, built
# with clang under AddressSanitizer and UndefinedBehaviorSanitizer. A finding fails the run
# and its input is printed. New inputs go to a scratch directory, never into the repository.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${FUZZ_SECONDS:-60}"
bash scripts/setup-deps.sh build fuzz

cmake --preset fuzz -DKLD_BUILD_TESTS=OFF -DKLD_BUILD_EXAMPLES=OFF >/dev/null
targets=()
for list in fuzz/*_fuzz.cmake; do targets+=("$(basename "$list" .cmake)"); done
cmake --build --preset fuzz -j "$(nproc)" --target "${targets[@]}" >/dev/null

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0:detect_odr_violation=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"

# One target: fuzz from a scratch copy of its corpus; on a finding, show the log tail and the
# input in hex.
run_one() {
  local name="$1" dir="$scratch/$1"
  mkdir -p "$dir/new" "$dir/crash"
  local binary
  binary="$(find build/fuzz -type f -name "$name" -perm -u+x | head -n 1)"
  if [ -z "$binary" ]; then
    echo "FAIL $name: not built"
    return 1
  fi
  local seed=()
  [ -d "fuzz/corpus/$name" ] && seed=("fuzz/corpus/$name")
  if "$binary" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=4096 -print_final_stats=1 \
       -artifact_prefix="$dir/crash/" "$dir/new" "${seed[@]}" >"$dir/log" 2>&1; then
    echo "ok   $name: $(grep -Eo 'stat::number_of_executed_units: *[0-9]+' "$dir/log" |
                        grep -Eo '[0-9]+$') runs, $(grep -Eo 'cov: [0-9]+ ft: [0-9]+' "$dir/log" |
                                                    tail -n 1)"
    return 0
  fi
  echo "FAIL $name: finding"
  tail -n 60 "$dir/log"
  for input in "$dir"/crash/*; do
    [ -f "$input" ] || continue
    echo "--- input $(basename "$input") ($(stat -c %s "$input") bytes):"
    od -A d -t x1z -v "$input" | head -n 64
  done
  return 1
}
export -f run_one
export scratch seconds

# Two targets at a time, one per core.
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run_one "$@"' _ {}
