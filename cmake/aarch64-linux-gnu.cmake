# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# 64-bit Arm with Debian's cross compiler. Programs run under qemu user emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/run-aarch64.sh)
