// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Ends a whole program that hangs or has failed, with a message. Background of waiting.h does so
// for one action that hangs.
#pragma once

#include <chrono>
#include <string>

namespace norvik::qel {

// A sign of life, and what is under way from now on: unless another one follows within `limit`, the
// program prints `what` and aborts. `what` must live until the next one.
//
// Threads: any.
void RestartHangGuard(const char* what, std::chrono::seconds limit);
// What the program waits for meanwhile, for the same message; null when it waits for nothing.
void SetAwaited(const char* what);

// Prints what is under way and what is wrong, and aborts.
[[noreturn]] void Fail(const std::string& what);
inline void ExpectTrue(bool is_so, const std::string& what) {
  if (!is_so) Fail(what);
}
template <typename T>
void ExpectEqual(T seen, T expected, const std::string& of) {
  if (seen == expected) return;
  Fail(of + " is " + std::to_string(seen) + ", expected " + std::to_string(expected));
}

}  // namespace norvik::qel
