// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/linux_machine/thermal.h"

#include <optional>
#include <utility>
#include <vector>

#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/thread_annotations.h"
#include "thermal_devices.h"
#include "thermal_history.h"
#include "thermal_types.h"
#include "watched_class.h"
#include "watcher.h"

namespace norvik::qel::linux_machine {

using services::ServiceEvent;
using services::ThermalData;
using services::ThermalOperation;

// Locks: reading_lock_ before the lock of ThermalService.
class Thermal::Service : public services::ThermalService, public WatchedClass {
 public:
  Service(ThermalTypes types, std::chrono::milliseconds period, services::ServiceObserver observer,
          const std::shared_ptr<const Wake>& wake)
      : ThermalService({}, WakingObserver(wake, std::move(observer))),
        WatchedClass({"thermal", "hwmon"}, "temperatures", wake),
        period_(period),
        history_(std::move(types)) {}

  std::optional<std::chrono::milliseconds> period() const override {
    const bool is_heard = callback_count() + cooling_callback_count() != 0;
    return is_heard ? std::optional(period_) : std::nullopt;
  }
  std::vector<TemperatureSource> sources() const {
    std::lock_guard<std::mutex> lock(reading_lock_);
    return history_.sources();
  }

 private:
  ndk::ScopedAStatus Permit(ThermalOperation operation) override;
  void ReadLocked(const std::vector<std::string>& syspaths)
      QUORVEL_REQUIRES(reading_lock_) override;
  void NoticeLackOfTemperaturesLocked(bool has_temperatures) QUORVEL_REQUIRES(reading_lock_);

  const std::chrono::milliseconds period_;
  ThermalHistory history_ QUORVEL_GUARDED_BY(reading_lock_);
  // True at first, so that the first reading notices missing temperatures.
  bool had_temperatures_ QUORVEL_GUARDED_BY(reading_lock_) = true;
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
  NoticeLackOfTemperaturesLocked(!reading.zones.empty());
  Report(history_.Continue(reading));
}

void Thermal::Service::NoticeLackOfTemperaturesLocked(bool has_temperatures) {
  if (had_temperatures_ && !has_temperatures)
    AddNoticeLocked("this machine has no temperature sensor");
  had_temperatures_ = has_temperatures;
}

Thermal::Thermal(services::ServiceObserver observer, ThermalSettings settings)
    : observer_(std::move(observer)), settings_(std::move(settings)) {}

Thermal::~Thermal() {
  Stop();
}

void Thermal::Start() {
  Stop();
  ThermalTypes types;
  if (!settings_.types_file.empty()) {
    for (std::string& error : types.Load(settings_.types_file)) {
      Tell(ServiceEvent::Kind::kNotice, std::move(error));
    }
  }
  service_ = ndk::SharedRefBase::make<Service>(std::move(types), settings_.period, observer_,
                                               std::make_shared<Wake>());
  watcher_ = std::make_unique<Watcher>(service_, [this](std::string notice) {
    Tell(ServiceEvent::Kind::kNotice, std::move(notice));
  });
  fake::Declare(services::kThermalInstance);
  process_ = std::make_unique<fake::ServiceProcess>("thermal");
  process_->AddService(service_, services::kThermalInstance);
  Tell(ServiceEvent::Kind::kStarted);
  watcher_->Run("thermal");
}

void Thermal::Stop() {
  if (service_ == nullptr) return;
  watcher_ = nullptr;
  // First: a client must not wait for a declared service that never comes.
  fake::Undeclare(services::kThermalInstance);
  if (process_ != nullptr) process_->Kill();
  process_ = nullptr;
  service_ = nullptr;
  Tell(ServiceEvent::Kind::kDied);
}

ThermalData Thermal::data() const {
  return service_ != nullptr ? service_->data() : ThermalData{};
}

std::vector<TemperatureSource> Thermal::sources() const {
  return service_ != nullptr ? service_->sources() : std::vector<TemperatureSource>{};
}

void Thermal::Tell(ServiceEvent::Kind kind, std::string detail) const {
  if (observer_ != nullptr) {
    observer_({.kind = kind, .service = "thermal", .detail = std::move(detail)});
  }
}

}  // namespace norvik::qel::linux_machine
