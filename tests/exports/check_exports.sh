#!/bin/sh
# Fails when the library exports a symbol that is not part of its interface.
lib="$1"
leaked=$(nm -D --defined-only "$lib" | c++filt | awk '{ $1 = ""; $2 = ""; print }' |
  grep -E '^ *(std::|__gnu_cxx::|(typeinfo|typeinfo name|vtable|VTT) for std::)|\(anonymous namespace\)|kld::|mem_Internal::')
if [ -n "$leaked" ]; then
  echo "$lib exports symbols outside its interface:"
  echo "$leaked"
  exit 1
fi
echo "$lib: $(nm -D --defined-only "$lib" | wc -l) exported symbols, all interface"
