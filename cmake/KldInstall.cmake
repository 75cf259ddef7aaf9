# Installs the libraries, the headers, the CMake package and the pkg-config file.

set(KLD_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/KLDTPXBasCoreUtils)
set(KLD_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/KLDTPXBasCoreUtils)

set(kld_installed KLDTPXBasCoreUtils KLDTPXBasAlloc KLDTPXBasGenericsLib KLDTPXBasPrfTrkLib
                  PV0CORE DXLSysTS)
if(TARGET KLDTPXBasAtiStd)
  list(APPEND kld_installed KLDTPXBasAtiStd)
endif()

install(TARGETS ${kld_installed} EXPORT KLDTPXBasCoreUtilsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  FILE_SET HEADERS DESTINATION ${KLD_INCLUDE_DIR})
install(EXPORT KLDTPXBasCoreUtilsTargets NAMESPACE KLDTPXBasCoreUtils::
  DESTINATION ${KLD_CMAKE_DIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/KLDTPXBasCoreUtilsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtilsConfig.cmake INSTALL_DESTINATION ${KLD_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtilsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtilsConfig.cmake
              ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtilsConfigVersion.cmake
        DESTINATION ${KLD_CMAKE_DIR})

# The .pc file finds its prefix from its own place, so an installed tree can be moved.
file(RELATIVE_PATH KLD_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" KLD_PC_TO_PREFIX "${KLD_PC_TO_PREFIX}")  # no "//" in the paths
configure_file(${PROJECT_SOURCE_DIR}/cmake/KLDTPXBasCoreUtils.pc.in
               ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtils.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/KLDTPXBasCoreUtils.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(TARGET KLDTPXBasAtiStd)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/KLDTPXBasAtiStd.pc.in
                 ${PROJECT_BINARY_DIR}/KLDTPXBasAtiStd.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/KLDTPXBasAtiStd.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
