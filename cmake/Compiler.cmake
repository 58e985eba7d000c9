# Warnings, sanitizers and the compiler cache: everything that holds for each of our targets.

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
# A position-independent executable's own relocations, packed: 60 KiB that need not be read at every
# start. The cross linkers do not know it yet, and a device's C library may not either.
include(CheckLinkerFlag)
check_linker_flag(CXX LINKER:-z,pack-relative-relocs WEBCTRL_PACKED_RELOCATIONS)
if(WEBCTRL_PACKED_RELOCATIONS AND NOT CMAKE_CROSSCOMPILING)
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

# webctrl_warnings(TARGET): our own code only; what is compiled from a package stays silent.
function(webctrl_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wformat=2 -Wundef
    -Wcast-align -Wpointer-arith $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
  if(WEBCTRL_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
