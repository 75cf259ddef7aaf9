# Script mode: stage an install, build a consumer against it with find_package, run it and
# check what it printed. LANG (CXX or C) names the consumer's language, EXE its program and
# EXPECT a pattern its output must match; a C++ consumer is also built by hand from the
# pkg-config file.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "command failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_${LANG}_COMPILER=${COMPILER}
    "-DCMAKE_${LANG}_FLAGS=${FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/${EXE})
message(STATUS "${EXE}: ${last_output}")
if(NOT last_output MATCHES "${EXPECT}")
  message(FATAL_ERROR "${EXE} did not print \"${EXPECT}\": ${last_output}")
endif()
if(NOT LANG STREQUAL "CXX")
  return()
endif()

# The pkg-config file of the same install builds the consumer by hand.
file(GLOB pc_files ${prefix}/lib*/pkgconfig/KLDTPXBasCoreUtils.pc)
if(NOT pc_files)
  message(FATAL_ERROR "no pkg-config file installed")
endif()
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  get_filename_component(pc_dir ${pc_files} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pc_dir})
  run(${PKG_CONFIG} --cflags --libs KLDTPXBasCoreUtils)
  string(STRIP "${last_output}" flags)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  separate_arguments(extra UNIX_COMMAND "${FLAGS} ${LINKER_FLAGS}")
  run(${PKG_CONFIG} --variable=libdir KLDTPXBasCoreUtils)
  string(STRIP "${last_output}" libdir)
  run(${COMPILER} ${extra} ${CONSUMER_DIR}/main.cpp ${flags} -Wl,-rpath,${libdir}
      -o ${WORK_DIR}/kld_consumer_pc)
  run(${WORK_DIR}/kld_consumer_pc)
endif()
