#!/usr/bin/env bash
# Installs the Debian packages the build, the tests, the benchmarks and the fuzzers need,
# when they are missing. Needs root for apt-get; otherwise it lists what is missing.
set -euo pipefail

packages=(cmake ninja-build g++ gcc gfortran pkg-config googletest libgtest-dev libgmock-dev
          libbenchmark-dev clang-14 libclang-rt-14-dev libicu-dev libjemalloc-dev clang-format)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "missing Debian packages (install them as root): ${missing[*]}" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
