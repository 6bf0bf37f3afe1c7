# Where `cmake --install` puts what the component is to those who use it: the tool with its manual and completions (the
# part `tool`), the shared library (`library`), and what it takes to build against it (`development`).
if(NOT CMAKE_INSTALL_DOCDIR)
  set(CMAKE_INSTALL_DOCDIR share/doc/rebate)
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS rebate RUNTIME COMPONENT tool)
install(FILES client/completions/rebate.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME rebate COMPONENT tool)
install(FILES client/completions/_rebate DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT tool)
install(FILES client/completions/rebate.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
        COMPONENT tool)

# The manual is what `--help` prints.
add_executable(rebate_manual client/manual/main.cpp client/manual/help_text.cpp client/manual/manual_page.cpp)
target_link_libraries(rebate_manual PRIVATE rebate_client)
set(manual_folder ${CMAKE_BINARY_DIR}/manual)
add_custom_command(
  OUTPUT ${manual_folder}/rebate.1
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${manual_folder}
  COMMAND rebate_manual ${manual_folder}
  DEPENDS rebate_manual
  VERBATIM)
add_custom_target(rebate_manual_pages ALL DEPENDS ${manual_folder}/rebate.1)
install(DIRECTORY ${manual_folder}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)

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
