// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/device_script.h"

#include <algorithm>
#include <utility>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

using Clock = Session::Clock;

DeviceScript::DeviceScript(Device& device, const std::set<std::string_view>& families)
    : device_(device) {
  for (const std::string_view service : {kHealthService, kSensorService, kThermalService}) {
    if (!families.empty() && !families.contains(FamilyOfService(service))) continue;
    auto steps = device.StepsOf(service);
    if (!steps.empty()) loops_.push_back({.steps = std::move(steps)});
  }
}

void DeviceScript::Run(Session& session, Clock::time_point end) {
  while (true) {
    Clock::time_point next = end;
    for (const Loop& loop : loops_) next = std::min(next, loop.due);
    const Session::Wake wake = session.WaitUntil(next);
    if (wake == Session::Wake::kStop) return;
    if (wake == Session::Wake::kEvent) continue;
    const Clock::time_point now = Clock::now();
    if (now >= end) return;
    for (Loop& loop : loops_) {
      if (loop.due > now) continue;
      loop.steps[loop.next].act();
      loop.next = (loop.next + 1) % loop.steps.size();
      loop.due = Clock::now() + loop.steps[loop.next].pause_before;
    }
  }
}

Clock::time_point EndOf(const Options& options) {
  return options.duration ? Clock::now() + *options.duration : Clock::time_point::max();
}

}  // namespace norvik::qel::monitor
