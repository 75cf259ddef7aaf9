kld_add_benchmark(cam_bench ${CMAKE_CURRENT_SOURCE_DIR}/cam_bench.cpp)
target_link_libraries(cam_bench PRIVATE KLDTPXBasAtiStd ${CMAKE_DL_LIBS})
