kld_add_fuzzer(atr_extract_fuzz ${CMAKE_CURRENT_SOURCE_DIR}/atr_extract_fuzz.cpp)
