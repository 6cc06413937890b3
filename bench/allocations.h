// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace norvik::qel::bench {

// How often any thread of the process has taken memory from the heap so far.
int64_t AllocationCount();

}  // namespace norvik::qel::bench
