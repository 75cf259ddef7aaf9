kld_add_benchmark(cam_bench ${CMAKE_CURRENT_SOURCE_DIR}/cam_bench.cpp)
target_link_libraries(cam_bench PRIVATE KLDTPXBasAtiStd)
# The same program over jemalloc, which replaces malloc for the whole process.
find_library(KLD_JEMALLOC jemalloc)
if(KLD_JEMALLOC)
  kld_add_benchmark(cam_bench_jemalloc ${CMAKE_CURRENT_SOURCE_DIR}/cam_bench.cpp)
  target_compile_definitions(cam_bench_jemalloc PRIVATE KLD_CAM_BENCH_JEMALLOC)
  target_link_libraries(cam_bench_jemalloc PRIVATE KLDTPXBasAtiStd ${KLD_JEMALLOC})
endif()
