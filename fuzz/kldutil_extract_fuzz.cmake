kld_add_fuzzer(kldutil_extract_fuzz ${CMAKE_CURRENT_SOURCE_DIR} /
               kldutil_extract_fuzz.cpp LIBS kldutil_commands)
