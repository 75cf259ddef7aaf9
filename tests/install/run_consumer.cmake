# Script mode: stage an install, build a consumer against it with find_package, run it and
# check what it printed. LANG (CXX, C or Fortran) names the consumer's language, EXE its
# program and EXPECT a pattern its output must match; the consumer is also built by hand from
# the pkg-config file. With SYSTEM, nothing is staged: the consumer is built against the
# installation under /usr (the Debian packages). Programs run with RUN_ENV (VAR=VALUE...) and
# get a fresh directory as their argument.
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "command failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

set(prefix_path "")
if(NOT SYSTEM)
  run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
  set(prefix_path -DCMAKE_PREFIX_PATH=${prefix})
endif()
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
    ${prefix_path} -DCMAKE_${LANG}_COMPILER=${COMPILER}
    "-DCMAKE_${LANG}_FLAGS=${FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}"
    -DKLD_CONSUMER_STANDARD=${STANDARD})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${CMAKE_COMMAND} -E env ${RUN_ENV} ${WORK_DIR}/build/${EXE} ${WORK_DIR})
message(STATUS "${EXE}: ${last_output}")
if(NOT last_output MATCHES "${EXPECT}")
  message(FATAL_ERROR "${EXE} did not print \"${EXPECT}\": ${last_output}")
endif()

# The pkg-config file of the same install builds the consumer by hand, warnings as errors, as a
# host's own build would (a C host included: no C++ flag may reach it).
find_program(PKG_CONFIG pkg-config REQUIRED)
if(NOT SYSTEM)
  file(GLOB pc_files ${prefix}/lib*/pkgconfig/KLDTPXBasCoreUtils.pc
       ${prefix}/lib*/*/pkgconfig/KLDTPXBasCoreUtils.pc)
  if(NOT pc_files)
    message(FATAL_ERROR "no pkg-config file installed")
  endif()
  get_filename_component(pc_dir ${pc_files} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pc_dir})
endif()
run(${PKG_CONFIG} --variable=pcfiledir KLDTPXBasCoreUtils)
string(STRIP "${last_output}" pc_dir)
foreach(pc KLDTPXBasCoreUtils KLDTPXBasAtiStd)
  file(READ ${pc_dir}/${pc}.pc pc_text)
  if(pc_text MATCHES "//" OR pc_text MATCHES "-std=")
    message(FATAL_ERROR "${pc}.pc holds a \"//\" or a language standard:\n${pc_text}")
  endif()
endforeach()
run(${PKG_CONFIG} --variable=libdir KLDTPXBasCoreUtils)
string(STRIP "${last_output}" libdir)
separate_arguments(extra UNIX_COMMAND "${FLAGS} ${LINKER_FLAGS}")

# Builds SOURCE with the flags of the pkg-config packages given, runs it.
function(build_with_pkg_config source program)
  run(${PKG_CONFIG} --cflags --libs ${ARGN})
  string(STRIP "${last_output}" flags)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  # The .pc files carry no language standard (C hosts use them too): a C++ host asks for
  # C++17 itself, as it would in its own build.
  set(warnings -Wall -Wextra -Werror)
  if(LANG STREQUAL "CXX")
    list(APPEND warnings -std=c++17)
  elseif(LANG STREQUAL "Fortran")
    set(warnings -Wall -Werror -std=f2008)
  endif()
  run(${COMPILER} ${extra} ${warnings} ${source} ${flags} -Wl,-rpath,${libdir}
      -o ${WORK_DIR}/${program})
  file(MAKE_DIRECTORY ${WORK_DIR}/${program}.run)
  run(${CMAKE_COMMAND} -E env ${RUN_ENV} ${WORK_DIR}/${program} ${WORK_DIR}/${program}.run)
endfunction()

if(LANG STREQUAL "C")
  build_with_pkg_config(${CONSUMER_DIR}/main.c kld_c_consumer_pc KLDTPXBasCoreUtils)
  return()
endif()
if(LANG STREQUAL "Fortran")
  build_with_pkg_config(${CONSUMER_DIR}/../caller.f90 kld_fortran_consumer_pc KLDTPXBasCoreUtils)
  return()
endif()
build_with_pkg_config(${CONSUMER_DIR}/main.cpp kld_consumer_pc KLDTPXBasCoreUtils)

# The README's threading example, through the thread factory's own pkg-config file.
if(README)
  file(READ ${README} readme)
  string(REPLACE ";" "@SEMI@" readme "${readme}")  # keep CMake's list handling off the code
  string(REPLACE "[" "@LB@" readme "${readme}")
  string(REPLACE "]" "@RB@" readme "${readme}")
  string(REGEX MATCHALL "```cpp\n[^`]*```" blocks "${readme}")
  foreach(block ${blocks})
    if(block MATCHES "TPXBasAtiStdThreadFact" AND block MATCHES "int main")
      string(REGEX REPLACE "^```cpp\n" "" block "${block}")
      string(REGEX REPLACE "```$" "" block "${block}")
      string(REPLACE "@SEMI@" ";" block "${block}")
      string(REPLACE "@LB@" "[" block "${block}")
      string(REPLACE "@RB@" "]" block "${block}")
      file(WRITE ${WORK_DIR}/threads.cpp "${block}")
      build_with_pkg_config(${WORK_DIR}/threads.cpp kld_threads_pc KLDTPXBasAtiStd)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "no threading example in ${README}")
endif()
