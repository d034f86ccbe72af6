# GTest::gtest, GTest::gtest_main, GTest::gmock and gtest_discover_tests. Debian ships GoogleTest
# built for its own architecture only; for another one it is built here from Debian's source package.
include(GoogleTest)
if(CMAKE_CROSSCOMPILING)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
else()
  find_package(GTest REQUIRED)
endif()
