kld_add_benchmark(ati_bench ${CMAKE_CURRENT_SOURCE_DIR}/ati_bench.cpp)
target_link_libraries(ati_bench PRIVATE KLDTPXBasAtiStd)
