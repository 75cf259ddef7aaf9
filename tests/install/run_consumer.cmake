# Script mode: stage an install, build the consumer against it, run it.
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
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/kld_consumer)
message(STATUS "consumer: ${last_output}")
if(NOT last_output MATCHES "tally 12")
  message(FATAL_ERROR "consumer did not see a fresh initialise: ${last_output}")
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
  separate_arguments(extra UNIX_COMMAND "${CXX_FLAGS} ${LINKER_FLAGS}")
  run(${PKG_CONFIG} --variable=libdir KLDTPXBasCoreUtils)
  string(STRIP "${last_output}" libdir)
  run(${CXX_COMPILER} ${extra} ${CONSUMER_DIR}/main.cpp ${flags} -Wl,-rpath,${libdir}
      -o ${WORK_DIR}/kld_consumer_pc)
  run(${WORK_DIR}/kld_consumer_pc)
endif()
