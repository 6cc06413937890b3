// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What ends a stress test that goes wrong, how they wait, and what the process holds.
#pragma once

#include <functional>
#include <string>

namespace norvik::qel::stress {

// Prints what is wrong, and where, and ends the program.
[[noreturn]] void Fail(const std::string& what);
inline void Expect(bool holds, const char* what) {
  if (!holds) Fail(what);
}
void ExpectEqual(long seen, long expected, const char* what);

// What is under way, for the messages, and a sign of life (hang_guard.h) for the next five minutes.
// `what` lives for ever.
void UnderWay(const char* what);

// Waits until `seen` gives `expected`, and lets the pauses of the library's workers end meanwhile:
// for what the library has to bring about by itself. No worker may be ended meanwhile.
void Await(const char* what, const std::function<long()>& seen, long expected);
// Waits until what has been sent has arrived.
void Deliver();
// Waits until all has arrived and every other thread of the process sleeps; workers may pause.
void Settle();

struct Figures {
  long library_threads = 0;
  long other_threads = 0;  // the fake platform's, which keeps those it once needed
  long descriptors = 0;
  long resident_kb = 0;  // 0 under the sanitizers, whose own memory grows with time
};
Figures Measure();

}  // namespace norvik::qel::stress
