# Script mode: installs the build into a fresh prefix and runs the installed kldutil there,
# which must find the installed libraries by itself.
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
  RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "install failed: ${err}")
endif()
execute_process(COMMAND env -u LD_LIBRARY_PATH ${WORK_DIR}/prefix/bin/kldutil natsort names.txt
  WORKING_DIRECTORY ${DATA} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
file(READ ${DATA}/expected/natsort.out want)
if(NOT rc EQUAL 0 OR NOT out STREQUAL want)
  message(FATAL_ERROR "installed kldutil: exit ${rc}\n${out}\n${err}")
endif()
file(REMOVE_RECURSE ${WORK_DIR})
