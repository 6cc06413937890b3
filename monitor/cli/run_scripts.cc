// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/run_scripts.h"

#include <algorithm>

namespace norvik::qel::monitor {

using Clock = Session::Clock;

void RunScripts(Session& session, std::initializer_list<DeviceScript*> scripts,
                Clock::time_point end) {
  while (true) {
    Clock::time_point next = end;
    for (const DeviceScript* script : scripts) {
      if (script != nullptr) next = std::min(next, script->next_step());
    }
    const Session::Wake wake = session.WaitUntil(next);
    if (wake == Session::Wake::kStop) return;
    if (wake == Session::Wake::kEvent) continue;
    const Clock::time_point now = Clock::now();
    if (now >= end) return;
    for (DeviceScript* script : scripts) {
      if (script != nullptr && script->next_step() <= now) script->TakeStep();
    }
  }
}

AllScripts::AllScripts(Device& device) {
  if (BatteryDriver* driver = device.battery_driver()) battery_.emplace(*driver);
  if (SensorDriver* driver = device.sensor_driver()) sensors_.emplace(*driver);
  if (ThermalDriver* driver = device.thermal_driver()) thermal_.emplace(*driver);
}

void AllScripts::Run(Session& session, Clock::time_point end) {
  RunScripts(session,
             {battery_ ? &*battery_ : nullptr, sensors_ ? &*sensors_ : nullptr,
              thermal_ ? &*thermal_ : nullptr},
             end);
}

Clock::time_point EndOf(const Options& options) {
  return options.duration ? Clock::now() + *options.duration : Clock::time_point::max();
}

}  // namespace norvik::qel::monitor
