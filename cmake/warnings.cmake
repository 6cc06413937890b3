# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Warnings are errors in the presets only: other compilers may warn of more. An exception is
# AServiceManager_getService(): the platform marks it as deprecated, but the library uses it on
# purpose, because it waits for a late service. Android.bp has the same exception.
add_compile_options(-Wall -Wextra -Wno-error=deprecated-declarations)

# clang with libc++ checks the lock annotations at compile time. libc++'s std::mutex has the
# attributes that the analysis needs; libstdc++'s does not.
option(QUORVEL_LIBCXX "Build with clang against libc++, with thread-safety analysis" OFF)
if(QUORVEL_LIBCXX)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-stdlib=libc++>)
  add_link_options(-stdlib=libc++)
  add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS>)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Werror=thread-safety>)
endif()
