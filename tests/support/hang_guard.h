// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Ends a whole program that hangs, with a message. Background of waiting.h does so for one action.
#pragma once

#include <chrono>

namespace norvik::qel {

// A sign of life, and what is under way from now on: unless another one follows within `limit`, the
// program prints `what` and aborts. `what` must live until the next one.
//
// Threads: any.
void RestartHangGuard(const char* what, std::chrono::seconds limit);
// The latest `what`.
const char* UnderWayNow();
// What the program waits for meanwhile, for the same message; null when it waits for nothing.
void SetAwaited(const char* what);

}  // namespace norvik::qel
