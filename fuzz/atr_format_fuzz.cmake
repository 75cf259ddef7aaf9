kld_add_fuzzer(atr_format_fuzz ${CMAKE_CURRENT_SOURCE_DIR}/atr_format_fuzz.cpp)
