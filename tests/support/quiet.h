// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// How the driver knows that everything that a step has caused is over, whichever thread does it.
#pragma once

namespace norvik::qel {

// Waits until no other thread of the process can go on by itself: all sleep, at a lock, a gate, a
// condition variable or in the kernel. Only the caller can cause what happens next, except what
// waits for a time (the pauses of workers do not: see pauses.h). False after half a minute.
//
// No cooperation of the threads is needed: the kernel tells each one's state and how often it has
// been on a processor. Two looks are taken at all of them. A thread that sleeps at both and has not
// run in between slept all the time from the one to the other; so at the moment between the looks
// all were asleep at once, and no thread was left to wake one.
[[nodiscard]] bool WaitUntilQuiet();

}  // namespace norvik::qel
