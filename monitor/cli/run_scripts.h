// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Runs the scripts of a device while its events are shown.
#pragma once

#include <initializer_list>
#include <optional>

#include "cli/session.h"
#include "scenario/battery_script.h"
#include "scenario/sensor_script.h"
#include "scenario/thermal_script.h"

namespace norvik::qel::monitor {

// Until the user stops it or the time is over, if there is an end. A script may be null.
void RunScripts(Session& session, std::initializer_list<DeviceScript*> scripts,
                Session::Clock::time_point end);

// The scripts of all families that the device can be told about.
//
// Threads: the main thread.
class AllScripts {
 public:
  explicit AllScripts(Device& device);
  // As RunScripts().
  void Run(Session& session, Session::Clock::time_point end);

 private:
  std::optional<BatteryScript> battery_;
  std::optional<SensorScript> sensors_;
  std::optional<ThermalScript> thermal_;
};

// The time after which a command ends by itself, if there is one.
Session::Clock::time_point EndOf(const Options& options);

}  // namespace norvik::qel::monitor
