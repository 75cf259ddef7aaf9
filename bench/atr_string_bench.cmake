kld_add_benchmark(atr_string_bench ${CMAKE_CURRENT_SOURCE_DIR}/atr_string_bench.cpp)
