# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

if(QUORVEL_SANITIZE)
  add_compile_options(-fsanitize=${QUORVEL_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QUORVEL_SANITIZE})
  if(QUORVEL_SANITIZE MATCHES "undefined")
    # This check needs run-time type information. The library is built without it.
    add_compile_options(-fno-sanitize=vptr)
  endif()
endif()
