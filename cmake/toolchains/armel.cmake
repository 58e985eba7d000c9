# SPDX-License-Identifier: GPL-2.0-only
# Debian armel, for the older chips: ARMv5TE (ARM926), soft float, and Thumb, which takes a fifth less.

set(CMAKE_SYSTEM_PROCESSOR armv5tel)
set(WEBCTRL_TRIPLET arm-linux-gnueabi)
set(WEBCTRL_EMULATED_CPU arm926)
set(_flags "-march=armv5te -mtune=arm926ej-s -mfloat-abi=soft -mthumb")
set(CMAKE_C_FLAGS_INIT "${_flags}")
set(CMAKE_CXX_FLAGS_INIT "${_flags}")
include(${CMAKE_CURRENT_LIST_DIR}/debian-arm.cmake)
