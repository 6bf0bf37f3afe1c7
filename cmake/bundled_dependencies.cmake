# The libraries of a build for another system or width, for which Debian has no packages: SQLite from its one-file source,
# libraries of headers by links of their own, so that nothing else of the host's headers is found beside them, and the
# test framework from the sources that its package ships.
enable_language(C)
include(cmake/sqlite_source.cmake)

rebate_sqlite_source(sqlite_folder)
add_library(rebate_sqlite STATIC ${sqlite_folder}/sqlite3.c)
target_include_directories(rebate_sqlite SYSTEM PUBLIC ${sqlite_folder})
# As Debian builds it, as far as an account can tell: literals travel as parameters, and what is deleted is overwritten.
target_compile_definitions(rebate_sqlite PRIVATE SQLITE_MAX_VARIABLE_NUMBER=250000 SQLITE_SECURE_DELETE SQLITE_USE_URI=1
                                                 SQLITE_OMIT_LOAD_EXTENSION)
target_link_libraries(rebate_sqlite PUBLIC Threads::Threads)
add_library(SQLite::SQLite3 ALIAS rebate_sqlite)

set(header_links ${CMAKE_BINARY_DIR}/headers)
# The target `name` for the headers that stand in /usr/include/`folder`.
function(rebate_header_library name folder)
  if(NOT EXISTS /usr/include/${folder})
    message(FATAL_ERROR "/usr/include/${folder} is missing: scripts/install-packages windows installs it.")
  endif()
  file(MAKE_DIRECTORY ${header_links})
  file(CREATE_LINK /usr/include/${folder} ${header_links}/${folder} SYMBOLIC)
  add_library(${name} INTERFACE IMPORTED)
  target_include_directories(${name} SYSTEM INTERFACE ${header_links})
endfunction()

rebate_header_library(Boost::boost boost)
# Boost doesn't trust the thread_local of the 32-bit MinGW compiler, and takes it for one of an old standard.
target_compile_definitions(Boost::boost INTERFACE BOOST_MP_DISABLE_DEPRECATE_03_WARNING)
rebate_header_library(nlohmann_json::nlohmann_json nlohmann)
rebate_header_library(CLI11::CLI11 CLI)

if(REBATE_TESTS)
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  if(NOT TARGET GTest::gtest)
    add_library(GTest::gtest ALIAS gtest)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
endif()
