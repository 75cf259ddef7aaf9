kld_add_fuzzer(kldutil_merge_fuzz ${CMAKE_CURRENT_SOURCE_DIR} /
               kldutil_merge_fuzz.cpp LIBS kldutil_commands)
