kld_add_fuzzer(atr_inspect_fuzz ${CMAKE_CURRENT_SOURCE_DIR}/atr_inspect_fuzz.cpp)
