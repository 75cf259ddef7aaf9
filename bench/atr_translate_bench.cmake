kld_add_benchmark(atr_translate_bench ${CMAKE_CURRENT_SOURCE_DIR}/atr_translate_bench.cpp)
# {fmt} with a runtime format is the other formatter the messages are compared with.
find_package(fmt REQUIRED)
target_link_libraries(atr_translate_bench PRIVATE fmt::fmt)
