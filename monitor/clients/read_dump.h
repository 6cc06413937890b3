// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The dumps of the library as text.
#pragma once

#include <string>

namespace norvik::qel::monitor {

// What a family's dump function writes.
std::string ReadDump(void (*dump)(void* handle, int fd), void* handle);

}  // namespace norvik::qel::monitor
