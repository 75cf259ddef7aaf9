kld_add_fuzzer(tpxstring_edit_fuzz ${CMAKE_CURRENT_SOURCE_DIR}/tpxstring_edit_fuzz.cpp)
