// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Keeps the library's workers in their pauses until the test ends the pauses.
//
// With real pauses a test would depend on the speed of the machine, and wait for seconds. A program
// that links pauses.cc brings its own pthread_cond_clockwait() and clock_gettime(), which the
// library finds before those of the C library. A timed wait of the library becomes one without a
// deadline; when EndPauses() ends it, the clock of its thread has moved past the deadline. Timed
// waits of other code are not changed. The library has to be the shared one, libquorvel.so.
#pragma once

#include <cstddef>

namespace norvik::qel {

// The number of workers in a pause.
size_t PausingWorkers();
// Ends all current pauses, and returns when each of those workers is idle or runs again: a later
// request does not join a series of attempts that has ended. No worker may be ended by Deinit...()
// meanwhile.
void EndPauses();

}  // namespace norvik::qel
