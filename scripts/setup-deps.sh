#!/usr/bin/env bash
# Installs the Debian packages the build, the tests, the benchmarks and the fuzzers need,
# when they are missing. Needs root for apt-get; otherwise it lists what is missing.
set -euo pipefail

packages=(cmake ninja-build g++ gcc gfortran pkg-config locales googletest libgtest-dev libgmock-dev
          libbenchmark-dev clang-14 libclang-rt-14-dev libicu-dev libjemalloc-dev clang-format)

# A Latin-1 locale, for the tests of text the process locale cannot hold.
need_latin1_locale() { ! locale -a 2>/dev/null | grep -qi '^en_US\.iso88591$'; }

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -ne 0 ]; then
  if [ "$(id -u)" -ne 0 ]; then
    echo "missing Debian packages (install them as root): ${missing[*]}" >&2
    exit 1
  fi
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

if need_latin1_locale; then
  if [ "$(id -u)" -eq 0 ]; then
    localedef -i en_US -f ISO-8859-1 en_US.ISO-8859-1 || true
  else
    echo "note: no en_US.ISO-8859-1 locale; the Latin-1 locale tests will be skipped" >&2
  fi
fi
