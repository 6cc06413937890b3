// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/linux_machine/thermal.h"

#include <optional>
#include <utility>
#include <vector>

#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/thread_annotations.h"
#include "running_service.h"
#include "thermal_devices.h"
#include "thermal_history.h"
#include "thermal_types.h"
#include "watched_class.h"

namespace norvik::qel::linux_machine {

using services::ServiceEvent;
using services::ThermalData;
using services::ThermalOperation;

// Locks: reading_lock_ before the lock of ThermalService.
class Thermal::Service : public WatchedClass, public services::ThermalService {
 public:
  Service(ThermalTypes types, std::chrono::milliseconds period, services::ServiceObserver observer)
      : WatchedClass({"thermal", "hwmon"}, "temperatures", period),
        ThermalService({}, WakingObserver(std::move(observer))),
        history_(std::move(types)) {}

  bool has_listeners() const override { return callback_count() + cooling_callback_count() != 0; }
  std::vector<TemperatureSource> sources() const {
    std::lock_guard<std::mutex> lock(reading_lock_);
    return history_.sources();
  }

 private:
  ndk::ScopedAStatus Permit(ThermalOperation operation) override;
  void ReadLocked(const std::vector<std::string>& syspaths)
      QUORVEL_REQUIRES(reading_lock_) override;

  ThermalHistory history_ QUORVEL_GUARDED_BY(reading_lock_);
};

ndk::ScopedAStatus Thermal::Service::Permit(ThermalOperation operation) {
  const bool leaves = operation == ThermalOperation::kUnregisterThermalChangedCallback ||
                      operation == ThermalOperation::kUnregisterCoolingDeviceChangedCallback;
  if (!leaves) Refresh();
  return ndk::ScopedAStatus::ok();
}

void Thermal::Service::ReadLocked(const std::vector<std::string>& syspaths) {
  const ThermalReading reading = ReadThermalDevices(syspaths);
  NoticeFaultsLocked(reading.faults);
  NoticeLackLocked(!reading.zones.empty(), "this machine has no temperature sensor");
  Report(history_.Continue(reading));
}

Thermal::Thermal(services::ServiceObserver observer, ThermalSettings settings)
    : events_("thermal", std::move(observer)), settings_(std::move(settings)) {}

Thermal::~Thermal() {
  Stop();
}

void Thermal::Start() {
  Stop();
  ThermalTypes types;
  if (!settings_.types_file.empty()) {
    for (std::string& error : types.Load(settings_.types_file)) {
      events_.Send(ServiceEvent::Kind::kNotice, std::move(error));
    }
  }
  service_ =
      ndk::SharedRefBase::make<Service>(std::move(types), settings_.period, events_.observer());
  fake::Declare(services::kThermalInstance);
  running_ =
      std::make_unique<RunningService>(service_, service_, services::kThermalInstance, events_);
}

void Thermal::Stop() {
  if (service_ == nullptr) return;
  // First: a client must not wait for a declared service that never comes.
  fake::Undeclare(services::kThermalInstance);
  running_ = nullptr;
  service_ = nullptr;
  events_.Send(ServiceEvent::Kind::kDied);
}

ThermalData Thermal::data() const {
  return service_ != nullptr ? service_->data() : ThermalData{};
}

std::vector<TemperatureSource> Thermal::sources() const {
  return service_ != nullptr ? service_->sources() : std::vector<TemperatureSource>{};
}

}  // namespace norvik::qel::linux_machine
