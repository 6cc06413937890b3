// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Queries the platform's services directly: the library's functions neither list temperatures nor
// say why a registration is pending.
//
// Threads: the main thread, after the device has been started.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "clients/event.h"

namespace norvik::qel::monitor {

// `is_declared` is empty for the sensor service, whose declaration the library does not check, and
// for the HIDL thermal service, whose declaration cannot be queried.
struct ServiceState {
  std::string_view service;  // kHealthService and the like
  std::string instance;      // "android.hardware.health.IHealth/default"
  std::optional<bool> is_declared = {};
  bool is_found = false;   // the look-up returns it: it runs, and this process may use it
  bool answers = false;    // it answers an empty call
  std::string error = {};  // of the call or the request that failed
  // Whether this service itself still runs. Null if a death notification cannot be requested.
  std::function<bool()> is_alive = {};
};

// Looks up all services without waiting for one: health, sensor, thermal, thermal (HIDL).
std::vector<ServiceState> LookUpServices();
inline const ServiceState& StateOf(std::string_view service,
                                   const std::vector<ServiceState>& states) {
  return *std::find_if(states.begin(), states.end(),
                       [&](const ServiceState& state) { return state.service == service; });
}

// Whether this process has threads that receive reports and death notifications.
bool HasBinderThreads();

// The name and the maker of a default sensor: "TMD3719 (ams)". Empty if there is none. The sensor
// service must have been found.
std::string DescriptionOf(Sensor sensor);

// All temperatures, of any type. nullopt if no thermal service can be queried.
std::optional<std::vector<TemperatureReport>> PlatformTemperatures();

}  // namespace norvik::qel::monitor
