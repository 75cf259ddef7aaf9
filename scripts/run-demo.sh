#!/usr/bin/env bash
# Builds the library and runs its demo host.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default --target kld_demo 2>/dev/null ||
  cmake --build --preset default --target kld_hello_host
if [ -x build/default/examples/demo_host/kld_demo ]; then
  exec build/default/examples/demo_host/kld_demo
fi
exec build/default/examples/hello_host/kld_hello_host
