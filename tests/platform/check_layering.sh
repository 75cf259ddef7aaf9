#!/bin/sh
# The platform stand-ins sit below the core library: no file under platform/ may include a
# header of the core library (TPXBase/PublicInterfaces, TPXBase/ProtectedInterfaces or a
# module's own folder). Prints each offending include and fails.
root="$1"
core_headers=$(find "$root/TPXBase" -name '*.h' -exec basename {} \; | sort -u)
status=0
for header in $core_headers; do
  if grep -rn --include='*.h' --include='*.cpp' "#include [\"<]$header[\">]" "$root/platform"; then
    status=1
  fi
done
[ $status -eq 0 ] && echo "platform/ includes no header of the core library"
exit $status
