# Where `cmake --install` puts what the component is to those who use it: the tool with its manual and completions (the
# part `tool`), the shared library (`library`), and what it takes to build against it (`development`).
if(NOT CMAKE_INSTALL_DOCDIR)
  set(CMAKE_INSTALL_DOCDIR share/doc/rebate)
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS rebate RUNTIME COMPONENT tool)
# In these folders the links of the guides to each other and to the examples hold.
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool PATTERN __pycache__ EXCLUDE)

install(
  TARGETS rebate_shared
  EXPORT RebateTargets
  LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(FILES abi/rebate.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Rebate)
install(EXPORT RebateTargets NAMESPACE Rebate:: DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(cmake/RebateConfig.cmake.in ${CMAKE_BINARY_DIR}/RebateConfig.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/RebateConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/RebateConfig.cmake ${CMAKE_BINARY_DIR}/RebateConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

# The prefix is found from where the file lies, so that an installed tree may be moved.
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_PREFIX}/${pkgconfig_folder} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
configure_file(cmake/rebate.pc.in ${CMAKE_BINARY_DIR}/rebate.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/rebate.pc DESTINATION ${pkgconfig_folder} COMPONENT development)
