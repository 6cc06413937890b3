// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The library's threads as the kernel reports them.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>

namespace norvik::qel::bench {

// The context switches of each thread so far, by thread id.
using ContextSwitches = std::map<pid_t, int64_t>;
ContextSwitches LibraryContextSwitches();

// Polls until there are `count` threads and none has run between two polls some milliseconds apart:
// all have started and fallen asleep. The kernel sends no notification of that. False after ten
// seconds.
bool LibraryThreadsSettle(int count);

}  // namespace norvik::qel::bench
