#!/usr/bin/env bash
# Installs the Debian packages that the given groups need, when they are missing:
#   build   cmake, a generator and the C and C++ compilers: the library, kldutil and the demo
#   tests   GoogleTest, gfortran, pkg-config and the locales the tests switch to
#   bench   Google Benchmark and the libraries the benchmarks compare with
#   fuzz    clang 14 and its sanitizer runtimes
#   dev     clang-format, clang-tidy
#   docs    Doxygen: the API reference (scripts/build-docs.sh)
#   package what builds and checks the Debian packages (dpkg-dev, file, lintian)
# With no group: build. As root the missing packages are installed (one line says which);
# otherwise one line gives the apt-get command to run, and the script fails only when the
# build group itself is incomplete.
set -euo pipefail

groups=("$@")
[ ${#groups[@]} -eq 0 ] && groups=(build)

packages_of() {
  case "$1" in
    build) echo cmake ninja-build g++ gcc ;;
    tests) echo googletest libgtest-dev libgmock-dev gfortran pkg-config locales ;;
    bench) echo libbenchmark-dev libicu-dev libjemalloc-dev libfmt-dev ;;
    fuzz) echo clang-14 libclang-rt-14-dev ;;
    dev) echo clang-format clang-tidy ;;
    docs) echo doxygen ;;
    package) echo dpkg-dev file lintian ;;
    *)
      echo "setup-deps: unknown group '$1' (build, tests, bench, fuzz, dev, docs, package)" >&2
      exit 2
      ;;
  esac
}

for group in "${groups[@]}"; do packages_of "$group" >/dev/null; done  # unknown: exit 2 here

missing=()
build_missing=0
for group in "${groups[@]}"; do
  for p in $(packages_of "$group"); do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
      missing+=("$p")
      [ "$group" = build ] && build_missing=1
    fi
  done
done

if [ ${#missing[@]} -ne 0 ]; then
  if [ "$(id -u)" -eq 0 ]; then
    echo "setup-deps: installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive DEBCONF_NOWARNINGS=yes
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
  else
    echo "setup-deps: missing packages; run: sudo apt-get install ${missing[*]}" >&2
    [ "$build_missing" -eq 1 ] && exit 1
  fi
fi

# The Latin-1 locale that the tests of text the process locale cannot hold switch to.
if [[ " ${groups[*]} " == *" tests "* ]] && ! locale -a 2>/dev/null | grep -qi '^en_US\.iso88591$'; then
  if [ "$(id -u)" -eq 0 ]; then
    localedef -i en_US -f ISO-8859-1 en_US.ISO-8859-1 || true
  else
    echo "setup-deps: no en_US.ISO-8859-1 locale (run: sudo localedef -i en_US -f ISO-8859-1 en_US.ISO-8859-1); the Latin-1 tests will be skipped" >&2
  fi
fi
