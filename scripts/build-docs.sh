#!/usr/bin/env bash
# Builds the HTML API reference of the installed headers with Doxygen into
# build/default/docs/html (open index.html). Any Doxygen warning, such as an undocumented
# public class, function, member or macro, fails the script; the warnings are printed.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup-deps.sh build docs
if ! command -v doxygen >/dev/null; then
  echo "build-docs: doxygen is not installed (bash scripts/setup-deps.sh docs as root)" >&2
  exit 1
fi
log=build/docs-configure.log
mkdir -p build
if ! cmake --preset default >"$log" 2>&1; then
  cat "$log" >&2
  echo "build-docs: configuring failed (log above, also in $log)" >&2
  exit 1
fi
if ! cmake --build --preset default --target docs; then
  echo "build-docs: Doxygen reported warnings (above); the reference is not complete" >&2
  exit 1
fi
echo "build-docs: API reference in build/default/docs/html/index.html"
