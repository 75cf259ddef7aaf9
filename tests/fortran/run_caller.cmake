# Script mode: run the Fortran caller in an empty directory and check the file it wrote
# through the descriptor that the library opened for it.
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
execute_process(COMMAND ${PROGRAM} ${WORK_DIR}
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the Fortran caller failed (${rc}):\n${out}\n${err}")
endif()
set(file ${WORK_DIR}/fortran_out.txt)
if(NOT EXISTS ${file})
  message(FATAL_ERROR "the Fortran caller did not create ${file}:\n${out}")
endif()
file(READ ${file} content)
if(NOT content STREQUAL "written through the library's descriptor\n")
  message(FATAL_ERROR "unexpected content of ${file}: [${content}]")
endif()
message(STATUS "${out}")
