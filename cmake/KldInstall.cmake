# Installs the libraries, the headers, the CMake package and the pkg-config file.

set(KLD_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/KLDTPXBasCoreUtils)
set(KLD_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/KLDTPXBasCoreUtils)

# Three parts, one Debian package each (cmake/KldPackage.cmake): runtime (the shared
# libraries), dev (headers, link names, CMake package, pkg-config files) and tools (kldutil,
# its manual page, the demo and its dictionary).
set(kld_public KLDTPXBasCoreUtils)
if(TARGET KLDTPXBasAtiStd)
  list(APPEND kld_public KLDTPXBasAtiStd)
endif()
set(kld_standins KLDTPXBasAlloc KLDTPXBasGenericsLib KLDTPXBasPrfTrkLib PV0CORE DXLSysTS)

install(TARGETS ${kld_public} EXPORT KLDTPXBasCoreUtilsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  FILE_SET HEADERS DESTINATION ${KLD_INCLUDE_DIR} COMPONENT dev)
# The stand-ins go to the private directory; the core library finds them through its RUNPATH.
install(TARGETS ${kld_standins} EXPORT KLDTPXBasCoreUtilsTargets
  LIBRARY DESTINATION ${KLD_PRIVATE_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  FILE_SET HEADERS DESTINATION ${KLD_INCLUDE_DIR} COMPONENT dev)
set_target_properties(KLDTPXBasCoreUtils PROPERTIES INSTALL_RPATH "$ORIGIN/KLDTPXBasCoreUtils")
if(TARGET KLDTPXBasAtiStd)
  set_target_properties(KLDTPXBasAtiStd PROPERTIES
    INSTALL_RPATH "$ORIGIN;$ORIGIN/KLDTPXBasCoreUtils")
endif()
install(EXPORT KLDTPXBasCoreUtilsTargets NAMESPACE KLDTPXBasCoreUtils::
  DESTINATION ${KLD_CMAKE_DIR} COMPONENT dev)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/KLDTPXBasCoreUtilsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtilsConfig.cmake INSTALL_DESTINATION ${KLD_CMAKE_DIR}
  PATH_VARS KLD_PRIVATE_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtilsConfig.cmake
              ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtilsConfigVersion.cmake
        DESTINATION ${KLD_CMAKE_DIR} COMPONENT dev)

# The .pc file finds its prefix from its own place, so an installed tree can be moved.
file(RELATIVE_PATH KLD_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" KLD_PC_TO_PREFIX "${KLD_PC_TO_PREFIX}")  # no "//" in the paths
configure_file(${PROJECT_SOURCE_DIR}/cmake/KLDTPXBasCoreUtils.pc.in
               ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtils.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtils.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
if(TARGET KLDTPXBasAtiStd)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/KLDTPXBasAtiStd.pc.in
                 ${PROJECT_BINARY_DIR}/KLDTPXBasAtiStd.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/KLDTPXBasAtiStd.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endif()
