# SPDX-License-Identifier: GPL-2.0-only
# Debian armhf, for the recorder's own chips: Cortex-A7 with NEON, hard float.

set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(WEBCTRL_TRIPLET arm-linux-gnueabihf)
set(WEBCTRL_EMULATED_CPU cortex-a7)
set(_flags "-mcpu=cortex-a7 -mfpu=neon-vfpv4 -mfloat-abi=hard -mthumb")
set(CMAKE_C_FLAGS_INIT "${_flags}")
set(CMAKE_CXX_FLAGS_INIT "${_flags}")
include(${CMAKE_CURRENT_LIST_DIR}/debian-arm.cmake)
