# The `docs` target: the HTML API reference of the installed headers, built by Doxygen from
# docs/Doxyfile.in. Any Doxygen warning fails the target. Without Doxygen there is no target
# (bash scripts/setup-deps.sh docs installs it).

find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  message(STATUS "Doxygen not found: no docs target (bash scripts/setup-deps.sh docs)")
  return()
endif()

# What a host sees: the two interface folders, the generated version header, and the headers
# of the platform libraries, all of which the umbrella header includes.
file(GLOB KLD_DOCS_PLATFORM_HEADERS CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/platform/*/include/*.h)
set(KLD_DOCS_INPUT_LIST
  ${PROJECT_SOURCE_DIR}/TPXBase/PublicInterfaces
  ${PROJECT_SOURCE_DIR}/TPXBase/ProtectedInterfaces
  ${PROJECT_BINARY_DIR}/include/KLDTPXBasCoreUtilsVersion.h
  ${KLD_DOCS_PLATFORM_HEADERS}
  ${PROJECT_SOURCE_DIR}/docs/reference-main.md)
file(GLOB KLD_DOCS_PLATFORM_INCLUDE_DIRS LIST_DIRECTORIES true
  ${PROJECT_SOURCE_DIR}/platform/*/include)
set(KLD_DOCS_INCLUDE_DIR_LIST
  ${PROJECT_SOURCE_DIR}/TPXBase/PublicInterfaces
  ${PROJECT_SOURCE_DIR}/TPXBase/ProtectedInterfaces
  ${PROJECT_BINARY_DIR}/include
  ${KLD_DOCS_PLATFORM_INCLUDE_DIRS})

# Doxyfile lists: quoted entries separated by spaces.
list(JOIN KLD_DOCS_INPUT_LIST "\" \"" KLD_DOCS_INPUT)
set(KLD_DOCS_INPUT "\"${KLD_DOCS_INPUT}\"")
list(JOIN KLD_DOCS_INCLUDE_DIR_LIST "\" \"" KLD_DOCS_INCLUDE_DIRS)
set(KLD_DOCS_INCLUDE_DIRS "\"${KLD_DOCS_INCLUDE_DIRS}\"")
set(KLD_DOCS_MAINPAGE ${PROJECT_SOURCE_DIR}/docs/reference-main.md)
set(KLD_DOCS_OUTPUT_DIR ${PROJECT_BINARY_DIR}/docs)

configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/docs/Doxyfile @ONLY)

# Doxygen runs on every build of the target, so its warnings are shown each time (it takes
# a few seconds).
add_custom_target(docs
  COMMAND ${DOXYGEN_EXECUTABLE} ${PROJECT_BINARY_DIR}/docs/Doxyfile
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  COMMENT "API reference: ${KLD_DOCS_OUTPUT_DIR}/html/index.html (Doxygen warnings are errors)"
  VERBATIM)
