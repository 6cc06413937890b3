# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Keeps paths of the build machine out of the results: out of messages and of debug information,
# which is not stripped from archives.
if(PROJECT_IS_TOP_LEVEL)
  add_compile_options(-ffile-prefix-map=${PROJECT_BINARY_DIR}=build
                      -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
endif()
