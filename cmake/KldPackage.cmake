# Debian packages of the install (cpack -G DEB in a build configured for /usr; see
# scripts/build-packages.sh):
#   libkldtpxbascoreutils1     the shared libraries (the stand-ins in their private directory)
#   libkldtpxbascoreutils-dev  headers, link names, CMake package, pkg-config files
#   kldtpxbascoreutils-tools   kldutil, its manual page, the demo and its dictionary
# Dependencies on other packages come from dpkg-shlibdeps; the packages of this build depend on
# each other at exactly this version.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kldtpxbascoreutils)
set(CPACK_PACKAGE_VENDOR "KLDTPXBasCoreUtils developers")
set(CPACK_PACKAGE_CONTACT "KLDTPXBasCoreUtils developers <kldtpxbascoreutils@example.org>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "core utilities of the engineering-simulation family")
set(CPACK_PACKAGE_DESCRIPTION_FILE ${PROJECT_SOURCE_DIR}/cmake/package-description.txt)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://kldtpxbascoreutils.example.org")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
# dpkg-shlibdeps finds the libraries of this build here (they are not installed yet).
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/platform ${PROJECT_BINARY_DIR}/TPXBase/KLDTPXBasAtiStd)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# The runtime package has the dynamic loader's cache refreshed by a trigger.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/package-triggers/triggers)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkldtpxbascoreutils${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkldtpxbascoreutils-dev)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kldtpxbascoreutils-tools)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "core utilities of the engineering-simulation family (shared libraries)")
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "core utilities of the engineering-simulation family (development files)")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "core utilities of the engineering-simulation family (kldutil and the demo)")
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)

# Every package carries the copyright file and a changelog, as Debian packages do.
foreach(component runtime dev tools)
  string(TOUPPER ${component} upper)
  set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES ${PROJECT_BINARY_DIR}/package/copyright ${PROJECT_BINARY_DIR}/package/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name} COMPONENT ${component})
endforeach()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
configure_file(${PROJECT_SOURCE_DIR}/cmake/package-copyright.in
               ${PROJECT_BINARY_DIR}/package/copyright @ONLY)
string(TIMESTAMP kld_package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${PROJECT_SOURCE_DIR}/cmake/package-changelog.in
               ${PROJECT_BINARY_DIR}/package/changelog @ONLY)
execute_process(COMMAND gzip -9 -n -f -k ${PROJECT_BINARY_DIR}/package/changelog)

include(CPack)
