kld_add_fuzzer(atr_dictionary_fuzz ${CMAKE_CURRENT_SOURCE_DIR}/atr_dictionary_fuzz.cpp)
