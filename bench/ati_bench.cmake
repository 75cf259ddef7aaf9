kld_add_benchmark(ati_bench ${CMAKE_CURRENT_SOURCE_DIR}/ati_bench.cpp)
# The empty callees the placeholder mutex is compared with sit in a shared library too.
add_library(ati_bench_callee SHARED ${CMAKE_CURRENT_SOURCE_DIR}/ati_bench_callee.cpp)
set_target_properties(ati_bench_callee PROPERTIES CXX_VISIBILITY_PRESET hidden)
target_compile_options(ati_bench_callee PRIVATE ${KLD_WARNINGS})
target_link_libraries(ati_bench_callee PRIVATE KLDTPXBasCoreUtils)
target_link_libraries(ati_bench PRIVATE KLDTPXBasAtiStd ati_bench_callee)
