# Debian packages of what cmake/install.cmake installs, as Debian parts such things: the tool, the library under its
# so-name, and what it takes to build against it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME rebate)
set(CPACK_PACKAGE_VENDOR "${PROJECT_NAME}")
set(CPACK_PACKAGE_CONTACT "${PROJECT_NAME} <rebate@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL tool library development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Folders are everybody's to read, whoever builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME rebate)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_TOOL_DESCRIPTION
    "Rebate schemes of an account, at the command line
Makes accounts, keeps rebate schemes, refuses overlapping ones, serves calls.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME librebate1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "Rebate schemes of an account, as a shared library
Answers calls of the component inside a process, through a C interface.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME librebate-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "librebate1 (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Rebate schemes of an account, for programs to be built
The header of the shared library, with what finds it by CMake and pkg-config.")

# Tells the packaging of programs that use the library which package they need, and the loader of its coming and going.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
include(CPack)
