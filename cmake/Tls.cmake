# SPDX-License-Identifier: GPL-2.0-only
# TLS, through the HTTP library's binding for mbedTLS. The static archives are preferred: the linker
# then takes what is reached, and the device needs no package of it.

option(WEBCTRL_TLS "Serve HTTPS too, with mbedTLS" ON)

add_library(tls INTERFACE)
if(WEBCTRL_TLS)
  find_path(MBEDTLS_INCLUDE_DIR mbedtls/ssl.h)
  foreach(_part tls x509 crypto)
    find_library(MBED${_part}_LIBRARY NAMES libmbed${_part}.a mbed${_part})
    if(NOT MBED${_part}_LIBRARY OR NOT MBEDTLS_INCLUDE_DIR)
      message(FATAL_ERROR "mbedTLS not found: run scripts/install-deps, or give -DWEBCTRL_TLS=OFF")
    endif()
    target_link_libraries(tls INTERFACE "${MBED${_part}_LIBRARY}")
  endforeach()
  if(NOT MBEDTLS_INCLUDE_DIR STREQUAL "/usr/include")
    target_include_directories(tls SYSTEM INTERFACE "${MBEDTLS_INCLUDE_DIR}")
  endif()
  target_compile_definitions(tls INTERFACE MG_TLS=MG_TLS_MBED)
endif()
