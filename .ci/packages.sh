#!/usr/bin/env bash
# The Debian packages, as a host team meets them (run as root, on a machine without them):
#   1. builds the three packages and runs lintian on them (an error fails the run);
#   2. installs them with dpkg -i;
#   3. builds the C++ (find_package, also as C++14), C, Fortran and README threading
#      consumers against /usr, each also by hand through pkg-config, and runs them;
#   4. runs kldutil --version and the demo from /usr/bin;
#   5. removes the packages with dpkg -r and checks that none of their files is left.
set -euo pipefail
cd "$(dirname "$0")/.."
root="$PWD"

if [ "$(id -u)" -ne 0 ]; then
  echo "packages: needs root (dpkg -i)" >&2
  exit 2
fi
bash scripts/setup-deps.sh build tests package >/dev/null

mapfile -t debs < <(bash scripts/build-packages.sh)
names=()
for deb in "${debs[@]}"; do
  names+=("$(dpkg-deb -f "$deb" Package)")
  echo "package $(basename "$deb"): $(stat -c %s "$deb") bytes," \
       "$(dpkg-deb -f "$deb" Installed-Size) KiB installed"
done

lintian_log="$(mktemp)"
work="$(mktemp -d)"
trap 'rm -rf "$work" "$lintian_log"; dpkg -r "${names[@]}" >/dev/null 2>&1 || true' EXIT
lintian --tag-display-limit 0 "${debs[@]}" 2>/dev/null >"$lintian_log" || true
echo "lintian: $(grep -c '^E:' "$lintian_log" || true) errors," \
     "$(grep -c '^W:' "$lintian_log" || true) warnings"
if grep -q '^E:' "$lintian_log"; then
  cat "$lintian_log"
  exit 1
fi

for name in "${names[@]}"; do
  if dpkg-query -W -f='${Status}' "$name" 2>/dev/null | grep -q "install ok installed"; then
    echo "packages: $name is installed already; remove it first" >&2
    exit 1
  fi
done
files="$work/files"
for deb in "${debs[@]}"; do
  dpkg-deb -c "$deb" | awk '{print $6}' | sed 's|^\.||' | grep -v '/$' >>"$files"
done
dpkg -i "${debs[@]}" >/dev/null

# The consumers of the test suite, now against the system installation.
consumer() {
  local name="$1" lang="$2" dir="$3" exe="$4" expect="$5"
  shift 5
  cmake -DSYSTEM=ON -DWORK_DIR="$work/$name" -DCONSUMER_DIR="$dir" -DGENERATOR=Ninja \
        -DLANG="$lang" -DEXE="$exe" "-DEXPECT=$expect" -DCOMPILER="$(command -v "$compiler")" \
        "$@" -P tests/install/run_consumer.cmake >"$work/$name.log" 2>&1 || {
    cat "$work/$name.log"
    echo "packages: the $name consumer failed against /usr" >&2
    exit 1
  }
  echo "consumer $name: ok"
}
compiler=g++ consumer cxx CXX "$PWD/tests/install/consumer" kld_consumer "tally 12" \
  -DREADME="$PWD/README.md"
compiler=g++ consumer cxx14 CXX "$PWD/tests/install/consumer" kld_consumer "tally 12" -DSTANDARD=14
compiler=gcc consumer c C "$PWD/tests/c/consumer" kld_c_consumer "c consumer: ok"
compiler=gfortran consumer fortran Fortran "$PWD/tests/fortran/consumer" kld_fortran_consumer \
  "fortran caller: ok" -DRUN_ENV=LC_ALL=en_US.iso88591

# The tools from /usr/bin, with the libraries found through their RUNPATH alone.
version="$(env -u LD_LIBRARY_PATH /usr/bin/kldutil --version)"
expected="kldutil $(sed -n 's/^project(KLDTPXBasCoreUtils VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
if [ "$version" != "$expected" ]; then
  echo "packages: kldutil --version printed '$version', not '$expected'" >&2
  exit 1
fi
echo "kldutil --version: $version"
(cd "$work" && env -u LD_LIBRARY_PATH /usr/bin/kld_demo >"$work/demo.out" 2>&1) || {
  cat "$work/demo.out"
  echo "packages: the demo failed from /usr/bin" >&2
  exit 1
}
# The installed demo finds its dictionary under /usr/share and says what the built one says.
(cd "$work" && "$root"/build/package/examples/demo_host/kld_demo >"$work/demo.built" 2>&1)
if ! cmp -s "$work/demo.out" "$work/demo.built"; then
  diff "$work/demo.built" "$work/demo.out" || true
  echo "packages: the demo from /usr/bin differs from the built one" >&2
  exit 1
fi
echo "demo from /usr/bin: $(wc -l <"$work/demo.out") lines, as built"

dpkg -r "${names[@]}" >/dev/null
left=0
while read -r file; do
  if [ -e "$file" ] || [ -L "$file" ]; then
    echo "packages: left behind: $file" >&2
    left=1
  fi
done <"$files"
for dir in /usr/include/KLDTPXBasCoreUtils /usr/lib/*/KLDTPXBasCoreUtils \
           /usr/lib/*/cmake/KLDTPXBasCoreUtils /usr/share/KLDTPXBasCoreUtils; do
  if [ -e "$dir" ]; then
    echo "packages: left behind: $dir" >&2
    left=1
  fi
done
[ "$left" -eq 0 ]
echo "removed: nothing left behind"
