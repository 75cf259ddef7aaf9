kld_add_benchmark(tpxstring_bench ${CMAKE_CURRENT_SOURCE_DIR}/tpxstring_bench.cpp)
target_link_libraries(tpxstring_bench PRIVATE icuuc)
