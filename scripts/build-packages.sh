#!/usr/bin/env bash
# Builds the Debian packages into build/package/: a Release build for /usr, then cpack.
# Prints the package files, one per line.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup-deps.sh build package
log=build/package-build.log
mkdir -p build
if ! { cmake --preset package && cmake --build --preset package -j "$(nproc)" &&
       (cd build/package && cpack -G DEB); } >"$log" 2>&1; then
  tail -n 40 "$log"
  echo "build-packages: failed (the whole log: $log)" >&2
  exit 1
fi
ls build/package/*.deb
