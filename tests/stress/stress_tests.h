// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The stress tests. Each ends with a service that runs and nobody registered, and ends the program
// when something is not as documented.
#pragma once

#include <cstdint>
#include <string>

#include "subject.h"

namespace norvik::qel::stress {

// Each returns what it has done, as text.

// `count` reports from three threads, while clients and handles come and go on three more.
[[nodiscard]] std::string ReportStress(Subject& subject, int count, uint64_t seed);
// `count` deaths; nearly all are over before their death notifications are handled.
[[nodiscard]] std::string RestartStress(Subject& subject, int count, uint64_t seed);
// `count` outages that end during the retries, and as many that last longer.
[[nodiscard]] std::string OutageStress(Subject& subject, int count, uint64_t seed);
// A service that comes up after its clients, `count` times.
[[nodiscard]] std::string LateStress(Subject& subject, int count, uint64_t seed);
// `count` ends of a handle at each point of what can be under way then.
[[nodiscard]] std::string TeardownStress(Subject& subject, int count, uint64_t seed);

// Every client of the handle hears of a report, two times.
void ExpectAllHear(Subject& subject, Handle& handle);
// The service's side of handles that have all their clients, when the library has done its work.
void AwaitHeld(const Subject& subject, size_t handles);

}  // namespace norvik::qel::stress
