// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Ends a program that hangs or has failed, with a message. Background in waiting.h does so for a
// single action that hangs.
#pragma once

#include <chrono>
#include <string>

namespace norvik::qel {

// Restarts the guard's timer. Unless the next call follows within `limit`, the program prints
// `what`, the current activity, and aborts. `what` must stay valid until the next call.
//
// Threads: any.
void RestartHangGuard(const char* what, std::chrono::seconds limit);
// Sets what the program waits for, which is added to the message; null if it does not wait.
void SetAwaited(const char* what);

// Prints the current activity and the error, and aborts.
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
