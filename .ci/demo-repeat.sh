#!/usr/bin/env bash
# Runs the demo host of the default build N times (default 100) and fails when any run's
# account differs from the first one's: the demo's output is deterministic by construction.
set -euo pipefail
cd "$(dirname "$0")/.."
runs="${1:-100}"
demo=build/default/examples/demo_host/kld_demo
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
"$demo" >"$scratch/first" 2>&1
for ((i = 2; i <= runs; i++)); do
  "$demo" >"$scratch/run" 2>&1
  if ! cmp -s "$scratch/first" "$scratch/run"; then
    echo "demo run $i differs from run 1:"
    diff "$scratch/first" "$scratch/run" || true
    exit 1
  fi
done
echo "demo: $runs runs, identical output"
