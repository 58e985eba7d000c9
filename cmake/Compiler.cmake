# SPDX-License-Identifier: GPL-2.0-only
# Warnings, hardening, sanitizers and the compiler cache: everything that holds for each target.

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

# CMake's Release asks for -O3; size matters more here than its last per cent.
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
# On 32-bit systems: times after 2038, and files with inode numbers above 32 bits, which stat(2) and
# readdir(3) would refuse otherwise.
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
# For a device: what a debugger wants is not flashed.
set(CMAKE_EXE_LINKER_FLAGS_MINSIZEREL "-s")
add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--gc-sections)
# Beside what link-time optimisation reads, objects hold machine code for the tests, which need not
# optimise the libraries once more each.
if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-ffat-lto-objects)
endif()
# webctrl_links_fast(TARGET): a program without link-time optimisation.
function(webctrl_links_fast target)
  set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
  target_link_options(${target} PRIVATE -fno-lto)
endfunction()
include(CheckPIESupported)
check_pie_supported()
include(CheckLinkerFlag)
if(WEBCTRL_STATIC)
  # Debian's C library for ARM has no start-up file for static-pie.
  check_linker_flag(CXX -static-pie WEBCTRL_HAS_STATIC_PIE)
  set(CMAKE_CXX_LINK_OPTIONS_PIE -static)
  if(WEBCTRL_HAS_STATIC_PIE)
    set(CMAKE_CXX_LINK_OPTIONS_PIE -static-pie)
  endif()
endif()
# A position-independent executable's own relocations, packed: 60 KiB that need not be read at every
# start. The cross linkers do not know it yet, and a device's C library may not either.
check_linker_flag(CXX LINKER:-z,pack-relative-relocs WEBCTRL_PACKED_RELOCATIONS)
if(WEBCTRL_PACKED_RELOCATIONS AND NOT CMAKE_CROSSCOMPILING)
  set(WEBCTRL_PACKS_RELOCATIONS ON)
  add_link_options(LINKER:-z,pack-relative-relocs)
endif()

if(WEBCTRL_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
    message(FATAL_ERROR "WEBCTRL_FUZZ needs clang: use the preset 'fuzz'")
  endif()
  set(WEBCTRL_SANITIZE fuzzer-no-link,address,undefined)
endif()
if(WEBCTRL_SANITIZE)
  add_compile_options(-fsanitize=${WEBCTRL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${WEBCTRL_SANITIZE})
  add_compile_definitions(WEBCTRL_SANITIZED=1)
endif()

# Not beside a sanitizer, which checks the same better. The cross compilers lack some of it; what the
# executable has in the end is read back by tests/packaging/hardening.
if(NOT WEBCTRL_SANITIZE)
  include(CheckCXXCompilerFlag)
  foreach(_flag -fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
    string(MAKE_C_IDENTIFIER "WEBCTRL_HAS${_flag}" _has)
    set(CMAKE_REQUIRED_FLAGS -Werror)
    check_cxx_compiler_flag(${_flag} ${_has})
    unset(CMAKE_REQUIRED_FLAGS)
    if(${_has})
      add_compile_options(${_flag})
    endif()
  endforeach()
  # The C library's checks of buffer sizes need an optimiser.
  add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()

# webctrl_warnings(TARGET): our own code only; what is compiled from a package stays silent.
function(webctrl_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wformat=2 -Wundef
    -Wcast-align -Wpointer-arith $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
  if(WEBCTRL_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
