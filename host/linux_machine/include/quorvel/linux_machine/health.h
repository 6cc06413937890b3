// This machine's battery and chargers, served as a device's health service.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/fake/service_process.h"
#include "quorvel/services/health_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::linux_machine {

class Watcher;

// A power supply of this machine and its part in what the service reports.
struct PowerSupply {
  enum class Kind { kBattery, kAc, kUsb, kWireless, kDock, kOther };
  // What a battery's part of the level is measured in.
  enum class Weight { kNone, kEnergy, kCharge, kMean };

  std::string name = {};
  Kind kind = Kind::kOther;
  // Empty for one that counts; else the reason: "accessory", "not present".
  std::string ignored_because = {};
  std::optional<bool> online = {};  // of a charger
  // Of a battery. The shares of all that count add up to 1; there is none while the level is not
  // known.
  std::optional<int32_t> level_percent = {};
  std::optional<int32_t> cycle_count = {};
  std::optional<double> share = {};
  Weight weight = Weight::kNone;
};

struct HealthSettings {
  // Between two readings while a callback is registered.
  std::chrono::milliseconds period = std::chrono::seconds(30);
};

// The service reports what the kernel's power-supply class says. It reads the class at every event,
// when a client asks, and once in a period while a callback is registered, because drivers do not
// announce every change. The level and the cycle count are -1 while unknown.
//
// Threads: Start() and Stop() by the owner, one at a time, not from the observer; the rest from any
// thread in between.
class Health {
 public:
  using HealthInfo = aidl::android::hardware::health::HealthInfo;

  // Does nothing yet. The observer receives the service's events and notices: a machine without a
  // battery, how several batteries make up the level, and once every file that cannot be read or
  // believed.
  explicit Health(services::ServiceObserver observer = nullptr, HealthSettings settings = {});
  // Stops it if nobody has.
  ~Health();
  Health(const Health&) = delete;
  Health& operator=(const Health&) = delete;

  // Declares the instance, reads the machine and runs the service. Stops the one that runs, if any.
  void Start();
  // Kills the service and takes the declaration back.
  void Stop();

  // What the service has last reported; nothing is known while none runs.
  HealthInfo info() const;
  // The supplies as last read, by name, those included that do not count; none while none runs.
  std::vector<PowerSupply> supplies() const;
  // How many callbacks the running service holds; 0 while none runs.
  size_t callback_count() const;

 private:
  class Service;

  void Tell(services::ServiceEvent::Kind kind, std::string detail = {}) const;

  const services::ServiceObserver observer_;
  const HealthSettings settings_;
  // All below change in Start() and Stop() only.
  std::shared_ptr<Service> service_;
  std::unique_ptr<fake::ServiceProcess> process_;
  std::unique_ptr<Watcher> watcher_;
};

}  // namespace norvik::qel::linux_machine
