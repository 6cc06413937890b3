// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace norvik::qel::bench {

// The number of heap allocations of all threads of the process so far.
int64_t AllocationCount();

}  // namespace norvik::qel::bench
