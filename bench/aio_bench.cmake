kld_add_benchmark(aio_bench ${CMAKE_CURRENT_SOURCE_DIR}/aio_bench.cpp)
