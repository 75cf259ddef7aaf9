kld_add_fuzzer(aio_istream_fuzz ${CMAKE_CURRENT_SOURCE_DIR}/aio_istream_fuzz.cpp)
