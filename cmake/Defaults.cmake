# SPDX-License-Identifier: GPL-2.0-only
# What a configuration without a preset gets: the preset release's build type and options, and tests
# where GoogleTest is.

set(WEBCTRL_STATIC_RUNTIME_DEFAULT OFF)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  message(STATUS "No build type given: Release, as the preset release")
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Release, Debug, RelWithDebInfo or MinSizeRel" FORCE)
  set(WEBCTRL_STATIC_RUNTIME_DEFAULT ON)
  include(CheckIPOSupported)
  check_ipo_supported(RESULT _ipo LANGUAGES CXX)
  if(_ipo)
    option(CMAKE_INTERPROCEDURAL_OPTIMIZATION "Link-time optimisation" ON)
  endif()
endif()

# A cross build compiles GoogleTest from its source; the package's library is the build machine's.
set(WEBCTRL_TESTS_DEFAULT ON)
if(CMAKE_CROSSCOMPILING)
  find_path(GTest_FOUND CMakeLists.txt PATHS /usr/src/googletest NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
else()
  find_package(GTest QUIET)
endif()
if(NOT GTest_FOUND)
  message(STATUS "GoogleTest is not here: no tests, unless -DWEBCTRL_TESTS=ON (scripts/install-deps test)")
  set(WEBCTRL_TESTS_DEFAULT OFF)
endif()
