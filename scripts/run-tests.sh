#!/usr/bin/env bash
# Builds the library and every test suite (default preset) and runs them all with ctest.
# With a preset name as argument (asan, tsan, debug), builds and runs that preset's tests.
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"
groups=(build tests)
[ "$preset" = clang ] && groups+=(fuzz)  # clang 14 itself
bash scripts/setup-deps.sh "${groups[@]}"
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -j "$(nproc)"
ctest --preset "$preset" --no-tests=error
