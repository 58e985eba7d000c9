# SPDX-License-Identifier: GPL-2.0-only
# The XML library. The static archive is preferred: the device then needs no package of it.

find_path(TINYXML_INCLUDE_DIR tinyxml.h REQUIRED)
find_library(TINYXML_LIBRARY NAMES libtinyxml.a tinyxml REQUIRED)

add_library(tinyxml STATIC IMPORTED)
set_target_properties(tinyxml PROPERTIES
  IMPORTED_LOCATION "${TINYXML_LIBRARY}")
if(NOT TINYXML_INCLUDE_DIR STREQUAL "/usr/include")
  set_target_properties(tinyxml PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${TINYXML_INCLUDE_DIR}")
endif()
