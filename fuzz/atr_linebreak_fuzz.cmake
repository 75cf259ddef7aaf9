kld_add_fuzzer(atr_linebreak_fuzz ${CMAKE_CURRENT_SOURCE_DIR}/atr_linebreak_fuzz.cpp)
