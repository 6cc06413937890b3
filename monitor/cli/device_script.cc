// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/device_script.h"

#include <algorithm>

namespace norvik::qel::monitor {

using Clock = Session::Clock;

DeviceScript::DeviceScript(Device& device, std::string_view service) : device_(device) {
  const auto add = [&](std::string_view its_service, auto* driver) {
    if (driver == nullptr || !its_service.starts_with(service)) return;
    loops_.push_back({.steps = StepsOf(*driver)});
  };
  add(kHealthService, device.battery_driver());
  add(kSensorService, device.sensor_driver());
  add(kThermalService, device.thermal_driver());
}

DeviceScript::~DeviceScript() {
  if (BatteryDriver* driver = device_.battery_driver()) driver->StartService();
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
