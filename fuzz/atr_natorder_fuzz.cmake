kld_add_fuzzer(atr_natorder_fuzz ${CMAKE_CURRENT_SOURCE_DIR}/atr_natorder_fuzz.cpp)
