#!/usr/bin/env bash
# Builds the library and its demo host, then runs the demo. The build's progress stays in a
# log: one line says how the build went, and the whole log is shown when it fails.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup-deps.sh build
log=build/demo-build.log
mkdir -p build
if ! { cmake --preset default && cmake --build --preset default -j "$(nproc)" --target kld_demo; } \
  >"$log" 2>&1; then
  cat "$log" >&2
  echo "run-demo: the build failed (log above, also in $log)" >&2
  exit 1
fi
echo "run-demo: built build/default/examples/demo_host/kld_demo (log in $log)"
exec build/default/examples/demo_host/kld_demo
