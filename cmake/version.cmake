# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# The version is defined once, in quorvel.h. The library's file name, the packages, the monitor and
# the manual pages take it from here.
foreach(part MAJOR MINOR PATCH)
  file(STRINGS ${CMAKE_CURRENT_SOURCE_DIR}/include/quorvel.h quorvel_version_${part}
       REGEX "^#define QUORVEL_VERSION_${part} [0-9]+$")
  string(REGEX REPLACE ".* " "" quorvel_version_${part} "${quorvel_version_${part}}")
endforeach()
set(quorvel_version ${quorvel_version_MAJOR}.${quorvel_version_MINOR}.${quorvel_version_PATCH})
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS include/quorvel.h)
