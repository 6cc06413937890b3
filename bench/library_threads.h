// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The library's threads, as the kernel tells of them.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>

namespace norvik::qel::bench {

// By thread id: how often each has begun to run so far, and has been taken off its processor again.
using ContextSwitches = std::map<pid_t, int64_t>;
ContextSwitches LibraryContextSwitches();

// Looks until there are `count` and none of them has run between two looks, some milliseconds
// apart: all have got going and gone to sleep. Nothing tells that but the kernel, and only to those
// who ask. False when it has not come to that after ten seconds.
bool LibraryThreadsSettle(int count);

}  // namespace norvik::qel::bench
