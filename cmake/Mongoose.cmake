# SPDX-License-Identifier: GPL-2.0-only
# The HTTP library, compiled from the source that the distribution's package installs.

set(MONGOOSE_DIR "" CACHE PATH "Folder with mongoose.c and mongoose.h (default: the installed package)")

if(MONGOOSE_DIR)
  set(_mongoose_hints "${MONGOOSE_DIR}")
else()
  set(_mongoose_hints /usr/src /usr/include)
endif()
find_file(MONGOOSE_SOURCE mongoose.c HINTS ${_mongoose_hints} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
find_path(MONGOOSE_INCLUDE mongoose.h HINTS ${_mongoose_hints} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
if(NOT MONGOOSE_SOURCE OR NOT MONGOOSE_INCLUDE)
  message(FATAL_ERROR "mongoose.c or mongoose.h not found: run scripts/install-deps, or give -DMONGOOSE_DIR=")
endif()

file(STRINGS "${MONGOOSE_INCLUDE}/mongoose.h" _mongoose_version REGEX "^#define MG_VERSION \"")
string(REGEX REPLACE ".*\"([0-9.]+)\".*" "\\1" MONGOOSE_VERSION "${_mongoose_version}")
if(NOT MONGOOSE_VERSION MATCHES "^7\\.")
  message(FATAL_ERROR "Mongoose 7 is needed, ${MONGOOSE_INCLUDE} holds '${MONGOOSE_VERSION}'")
endif()

# What Http/HttpConnection.cpp leans on beyond the documented interface was checked with this one.
if(NOT MONGOOSE_VERSION STREQUAL "7.23")
  message(WARNING "Mongoose ${MONGOOSE_VERSION}: the list in docs/architecture.md was checked with 7.23")
endif()

# A copy of the header in a folder of its own keeps /usr/include out of the search path,
# which a cross build must not see.
set(_mongoose_include "${CMAKE_BINARY_DIR}/mongoose-include")
configure_file("${MONGOOSE_INCLUDE}/mongoose.h" "${_mongoose_include}/mongoose.h" COPYONLY)

add_library(mongoose STATIC "${MONGOOSE_SOURCE}" "${PROJECT_SOURCE_DIR}/CBB/WebCtrl/Http/LibraryRandom.cpp")
target_include_directories(mongoose SYSTEM PUBLIC "${_mongoose_include}")
# The console shows this program's lines only; the listener is IPv4 only.
# poll(2) instead of epoll(7), which goes on reporting a socket that is not to be read for a while.
target_compile_definitions(mongoose PUBLIC MG_ENABLE_LOG=0 MG_ENABLE_IPV6=0
  MG_ENABLE_EPOLL=0 MG_ENABLE_POLL=1 MG_ENABLE_CUSTOM_RANDOM=1
  MG_MAX_HTTP_HEADERS=101 # the last one stays empty
  MG_MAX_RECV_SIZE=81920) # the largest request, 64 KiB, and one read
target_link_libraries(mongoose PUBLIC tls)
target_compile_options(mongoose PRIVATE -w)
