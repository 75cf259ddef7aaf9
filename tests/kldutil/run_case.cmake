# Script mode: runs kldutil once and compares its exit code, standard output and standard
# error with what the case expects.
#   TOOL       the binary
#   ARGS       its arguments (a list)
#   DATA       working directory (the fixtures), so messages name files as given
#   STDIN      file fed to standard input (default: empty)
#   ENV        NAME=VALUE pairs set for the run; NAME= unsets
#   RC         expected exit code
#   OUT, ERR   files whose bytes the output must equal (relative to DATA/expected)
#   STDOUT_TO  a file the standard output is written to instead; with OUT, the file is
#              compared with the expected one byte for byte
#   OUT_MATCHES, ERR_MATCHES  regular expressions the output must match instead
# An output with neither an expected file nor an expression must be empty.
cmake_minimum_required(VERSION 3.25)
foreach(pair IN LISTS ENV)
  string(FIND "${pair}" "=" eq)
  string(SUBSTRING "${pair}" 0 ${eq} name)
  math(EXPR start "${eq} + 1")
  string(SUBSTRING "${pair}" ${start} -1 value)
  if(value STREQUAL "")
    unset(ENV{${name}})
  else()
    set(ENV{${name}} "${value}")
  endif()
endforeach()
# The installed binary finds its libraries from its own place, not through the environment.
unset(ENV{LD_LIBRARY_PATH})
if(NOT STDIN)
  set(STDIN /dev/null)
endif()
if(STDOUT_TO)  # standard output goes to that file (a full device, say) instead
  execute_process(COMMAND ${TOOL} ${ARGS} WORKING_DIRECTORY ${DATA} INPUT_FILE ${STDIN}
    RESULT_VARIABLE rc OUTPUT_FILE ${STDOUT_TO} ERROR_VARIABLE err)
  set(out "")
  if(OUT)  # compared byte for byte as files: the output may hold zero bytes
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${STDOUT_TO}
                    ${DATA}/expected/${OUT} RESULT_VARIABLE differs)
    if(differs)
      message(FATAL_ERROR "kldutil ${ARGS}: ${STDOUT_TO} differs from expected/${OUT}")
    endif()
    set(OUT "")  # done: a normal variable hides the cached one
  endif()
else()
  execute_process(COMMAND ${TOOL} ${ARGS} WORKING_DIRECTORY ${DATA} INPUT_FILE ${STDIN}
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
endif()

set(failed "")
if(NOT rc STREQUAL RC)
  string(APPEND failed "exit code ${rc}, expected ${RC}\n")
endif()
foreach(stream OUT ERR)
  if(stream STREQUAL "OUT")
    set(got "${out}")
  else()
    set(got "${err}")
  endif()
  if(${stream})
    file(READ ${DATA}/expected/${${stream}} want)
    if(NOT got STREQUAL want)
      string(APPEND failed "std${stream} differs from expected/${${stream}}:\n${got}\n")
    endif()
  elseif(${stream}_MATCHES)
    if(NOT got MATCHES "${${stream}_MATCHES}")
      string(APPEND failed "std${stream} does not match '${${stream}_MATCHES}':\n${got}\n")
    endif()
  elseif(NOT got STREQUAL "")
    string(APPEND failed "std${stream} should be empty:\n${got}\n")
  endif()
endforeach()
if(failed)
  message(FATAL_ERROR "kldutil ${ARGS}\n${failed}")
endif()
