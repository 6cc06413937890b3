// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// All that can happen at once.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "subject.h"

namespace norvik::qel::stress {

enum class Kind {
  kReports,  // of a service that lives; in some rounds it starts after its clients have come
  kDeaths,   // of the service, which comes back
};

// Rounds, for `count` reports or deaths or more. In each, two threads report, two register
// and deregister clients of one handle, one makes handles and ends them, one asks questions. After
// each, every client that has stayed hears what is reported, and the service holds the callbacks of
// the handles that there are. Returns what has been done, as text.
[[nodiscard]] std::string Storm(Subject& subject, Kind kind, int count, uint64_t seed);

// Waits until `seen` gives `expected`, and lets the pauses of the library's workers end meanwhile:
// for what the library has to bring about by itself. No worker may be ended meanwhile.
void Await(const char* what, const std::function<long()>& seen, long expected);
// Waits until all has arrived and every other thread of the process sleeps; workers may pause.
void Settle();

}  // namespace norvik::qel::stress
