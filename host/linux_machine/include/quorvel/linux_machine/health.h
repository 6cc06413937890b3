// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A health service with the battery and the chargers of this machine.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/services/health_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::linux_machine {

class RunningService;

// A power supply of this machine and its contribution to the report.
struct PowerSupply {
  enum class Kind { kBattery, kAc, kUsb, kWireless, kDock, kOther };
  // The quantity by which the levels of batteries are combined.
  enum class Weight { kNone, kEnergy, kCharge, kMean };

  std::string name = {};
  Kind kind = Kind::kOther;
  // Why the supply does not count: "accessory", "not present". Empty if it counts.
  std::string ignored_because = {};
  std::optional<bool> online = {};  // of a charger
  // Of a battery. The shares of all batteries that count add up to 1. Empty while the level is
  // unknown.
  std::optional<int32_t> level_percent = {};
  std::optional<int32_t> cycle_count = {};
  std::optional<double> share = {};
  Weight weight = Weight::kNone;
};

struct HealthSettings {
  // The time between two readings while a callback is registered.
  std::chrono::milliseconds period = std::chrono::seconds(30);
};

// The service reads the kernel's power-supply class at every event of the class, and whenever a
// client asks for a value or registers. Drivers do not announce every change, so while a callback
// is registered the service also reads once per period. It reports changes. An unknown level or
// cycle count is -1.
//
// Threads: the owner calls Start() and Stop(), one at a time and not from the observer. All other
// functions may be called from any thread in between.
class Health {
 public:
  using HealthInfo = aidl::android::hardware::health::HealthInfo;

  // Does nothing yet. The observer receives the events of the service. It is also notified if the
  // machine has no battery, of the shares of several batteries in the level, and once for each file
  // that is unreadable or invalid.
  explicit Health(services::ServiceObserver observer = nullptr, HealthSettings settings = {});
  // Stops the service if it is running.
  ~Health();
  Health(const Health&) = delete;
  Health& operator=(const Health&) = delete;

  // Declares the instance, reads the devices and starts the service. Stops a running one first.
  void Start();
  // Kills the service and removes the declaration.
  void Stop();

  // The last report. If the service is not running, all values are unknown.
  HealthInfo info() const;
  // The supplies of the last reading, by name, including those that do not count. Empty if the
  // service is not running.
  std::vector<PowerSupply> supplies() const;
  // The number of callbacks registered with the running service. 0 if it is not running.
  size_t callback_count() const;

 private:
  class Service;

  const services::EventSender events_;
  const HealthSettings settings_;
  // The members below change only in Start() and Stop().
  std::shared_ptr<Service> service_;
  std::unique_ptr<RunningService> running_;
};

}  // namespace norvik::qel::linux_machine
