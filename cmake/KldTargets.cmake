# Helpers shared by every target of the project.

set(KLD_WARNINGS -Wall -Wextra -Werror)

# Settings of every shared library we build: hidden symbols unless exported, our warnings,
# versioned soname, and no undefined symbols left for the loader to find.
function(kld_library_defaults target)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    C_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  target_compile_options(${target} PRIVATE ${KLD_WARNINGS})
  target_link_options(${target} PRIVATE
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/kld_exports.map)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS
    ${PROJECT_SOURCE_DIR}/cmake/kld_exports.map)
  if(NOT KLD_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
endfunction()

# Adds the sources of one module folder (src/*.cpp) to the library.
function(kld_add_module_sources)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp)
  target_sources(KLDTPXBasCoreUtils PRIVATE ${sources})
  target_include_directories(KLDTPXBasCoreUtils PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src)
endfunction()

# One test binary per module from every *_test.cpp in the calling folder.
#   kld_add_module_tests(<name> [LIBS extra...] [LABELS label...])
function(kld_add_module_tests name)
  cmake_parse_arguments(ARG "" "" "LIBS;LABELS;SOURCES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp)
  add_executable(${name}_tests ${sources} ${ARG_SOURCES})
  target_compile_options(${name}_tests PRIVATE ${KLD_WARNINGS})
  target_link_libraries(${name}_tests PRIVATE KLDTPXBasCoreUtils GTest::gtest_main GTest::gmock
                        ${ARG_LIBS})
  target_include_directories(${name}_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests/support)
  set(labels ${name} ${ARG_LABELS})
  gtest_discover_tests(${name}_tests
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    DISCOVERY_TIMEOUT 60)
  # Labels are set once the discovered tests are known: passed through the discovery script
  # as a property, a list of labels would keep only its first one.
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${name}_tests_labels.cmake
    "if(${name}_tests_TESTS)\n"
    "  set_tests_properties(\${${name}_tests_TESTS} PROPERTIES LABELS \"${labels}\")\n"
    "endif()\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES
    ${CMAKE_CURRENT_BINARY_DIR}/${name}_tests_labels.cmake)
endfunction()

# A consumer test: installs the build into a fresh prefix, builds the consumer in
# CONSUMER_DIR against it with find_package and with pkg-config, runs it and matches EXPECT
# (tests/install/run_consumer.cmake).
#   kld_add_consumer_test(<name> LANG <C|CXX|Fortran> EXE <program> EXPECT <regex>
#                         [LABELS ...] [DEFINES -D...] [RUN_ENV VAR=VALUE])
function(kld_add_consumer_test name)
  cmake_parse_arguments(ARG "" "LANG;EXE;EXPECT;RUN_ENV" "LABELS;DEFINES" ${ARGN})
  add_test(NAME ${name}
    COMMAND ${CMAKE_COMMAND}
      -DBUILD_DIR=${PROJECT_BINARY_DIR}
      -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/${name}
      -DCONSUMER_DIR=${CMAKE_CURRENT_SOURCE_DIR}/consumer
      -DGENERATOR=${CMAKE_GENERATOR}
      -DLANG=${ARG_LANG} -DEXE=${ARG_EXE} "-DEXPECT=${ARG_EXPECT}"
      -DCOMPILER=${CMAKE_${ARG_LANG}_COMPILER}
      "-DFLAGS=${CMAKE_${ARG_LANG}_FLAGS}"
      "-DLINKER_FLAGS=${CMAKE_EXE_LINKER_FLAGS}"
      "-DRUN_ENV=${ARG_RUN_ENV}"
      ${ARG_DEFINES}
      -P ${PROJECT_SOURCE_DIR}/tests/install/run_consumer.cmake)
  set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 300 RUN_SERIAL ON)
endfunction()
