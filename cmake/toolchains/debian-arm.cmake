# SPDX-License-Identifier: GPL-2.0-only
# What both ARM flavours share; WEBCTRL_TRIPLET and WEBCTRL_EMULATED_CPU come from the including file.
# Debian's cross compilers look for headers and libraries of their architecture by themselves.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${WEBCTRL_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${WEBCTRL_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${WEBCTRL_TRIPLET})
# These processors' pages are of 4 KiB. Newer linkers leave room for pages of 64 KiB, in the file too.
add_link_options(LINKER:-z,max-page-size=4096)

# Emulating the very processor makes an instruction that it lacks fail a test. The libraries are
# those of the target's own packages: a loader from the cross compiler's folder (-L) would take the
# C library from there or from here, and thread creation crashes where the two differ.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -cpu ${WEBCTRL_EMULATED_CPU})

# Programs are the build machine's; headers and libraries of other architectures must not match.
set(CMAKE_FIND_ROOT_PATH /usr/${WEBCTRL_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

# No link-time optimisation: GCC 12 then ends the cleanups of an unwound stack with _Unwind_Resume,
# where the ARM ABI wants __cxa_end_cleanup, and cancelling a thread that holds a lock ends the
# process.
set(CMAKE_INTERPROCEDURAL_OPTIMIZATION OFF CACHE BOOL "" FORCE)
