// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/linux_machine/health.h"

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "power_supplies.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/thread_annotations.h"
#include "running_service.h"
#include "watched_class.h"

namespace norvik::qel::linux_machine {

using aidl::android::hardware::health::BatteryCapacityLevel;
using aidl::android::hardware::health::BatteryHealth;
using aidl::android::hardware::health::BatteryStatus;
using aidl::android::hardware::health::HealthInfo;
using services::HealthOperation;
using services::ServiceEvent;

namespace {

// Clients of the library read it as "no data".
constexpr int32_t kUnknown = -1;

HealthInfo ToHealthInfo(const PowerReading& reading) {
  const Chargers& chargers = reading.chargers;
  const Battery battery = reading.battery.value_or(Battery{});
  HealthInfo info;
  info.chargerAcOnline = chargers.ac_online;
  info.chargerUsbOnline = chargers.usb_online;
  info.chargerWirelessOnline = chargers.wireless_online;
  info.chargerDockOnline = chargers.dock_online;
  info.maxChargingCurrentMicroamps = chargers.max_current_microamps.value_or(0);
  info.maxChargingVoltageMicrovolts = chargers.max_voltage_microvolts.value_or(0);
  info.batteryPresent = reading.battery.has_value();
  info.batteryLevel = battery.level_percent.value_or(kUnknown);
  info.batteryCycleCount = battery.cycle_count.value_or(kUnknown);
  info.batteryStatus = battery.status.value_or(BatteryStatus::UNKNOWN);
  info.batteryHealth = battery.health.value_or(BatteryHealth::UNKNOWN);
  info.batteryCapacityLevel = battery.capacity_level.value_or(BatteryCapacityLevel::UNSUPPORTED);
  info.batteryTechnology = battery.technology.value_or("");
  info.batteryVoltageMillivolts = battery.voltage_millivolts.value_or(0);
  info.batteryTemperatureTenthsCelsius = battery.temperature_tenths_celsius.value_or(0);
  info.batteryCurrentMicroamps = battery.current_microamps.value_or(0);
  info.batteryCurrentAverageMicroamps = battery.current_average_microamps.value_or(0);
  info.batteryFullChargeUah = battery.full_charge_uah.value_or(0);
  info.batteryFullChargeDesignCapacityUah = battery.full_charge_design_uah.value_or(0);
  info.batteryChargeCounterUah = battery.charge_counter_uah.value_or(0);
  info.batteryChargeTimeToFullNowSeconds = battery.seconds_to_full.value_or(
      HealthInfo::BATTERY_CHARGE_TIME_TO_FULL_NOW_SECONDS_UNSUPPORTED);
  return info;
}

// Whether the last reading has the value for an operation.
bool HasAnswer(HealthOperation operation, const std::optional<Battery>& battery) {
  switch (operation) {
    case HealthOperation::kGetCapacity:
      return battery && battery->level_percent;
    case HealthOperation::kGetChargeCounterUah:
      return battery && battery->charge_counter_uah;
    case HealthOperation::kGetCurrentNowMicroamps:
      return battery && battery->current_microamps;
    case HealthOperation::kGetCurrentAverageMicroamps:
      return battery && battery->current_average_microamps;
    case HealthOperation::kGetStorageInfo:
    case HealthOperation::kGetDiskStats:
    case HealthOperation::kSetChargingPolicy:
    case HealthOperation::kGetChargingPolicy:
      return false;
    default:
      return true;
  }
}

}  // namespace

// Locks: reading_lock_ before the lock of HealthService.
class Health::Service : public WatchedClass, public services::HealthService {
 public:
  Service(std::chrono::milliseconds period, services::ServiceObserver observer)
      : WatchedClass({"power_supply"}, "power supplies", period),
        HealthService(ToHealthInfo({}), WakingObserver(std::move(observer))) {}

  bool has_listeners() const override { return callback_count() != 0; }
  std::vector<PowerSupply> supplies() const {
    std::lock_guard<std::mutex> lock(reading_lock_);
    return supplies_;
  }

 private:
  ndk::ScopedAStatus Permit(HealthOperation operation) override;
  void ReadLocked(const std::vector<std::string>& syspaths)
      QUORVEL_REQUIRES(reading_lock_) override;

  std::optional<Battery> battery_ QUORVEL_GUARDED_BY(reading_lock_);
  std::vector<PowerSupply> supplies_ QUORVEL_GUARDED_BY(reading_lock_);
  std::string parts_of_level_ QUORVEL_GUARDED_BY(reading_lock_);
};

ndk::ScopedAStatus Health::Service::Permit(HealthOperation operation) {
  if (operation == HealthOperation::kUnregisterCallback) return ndk::ScopedAStatus::ok();
  // Many drivers announce a change of the level late or never, so the files are read whenever a
  // client asks.
  Refresh();
  std::lock_guard<std::mutex> lock(reading_lock_);
  return ndk::ScopedAStatus::fromExceptionCode(
      HasAnswer(operation, battery_) ? EX_NONE : EX_UNSUPPORTED_OPERATION);
}

void Health::Service::ReadLocked(const std::vector<std::string>& syspaths) {
  const PowerReading reading = ReadPowerSupplies(syspaths);
  NoticeFaultsLocked(reading.faults);
  NoticeLackLocked(reading.battery.has_value(), "this machine has no battery");
  // The text changes, and is noticed again, when a share changes by a percent. That is rare.
  const std::string before = std::exchange(parts_of_level_, PartsOfLevel(reading));
  if (!parts_of_level_.empty() && parts_of_level_ != before) AddNoticeLocked(parts_of_level_);
  battery_ = reading.battery;
  supplies_ = reading.supplies;
  const HealthInfo now = ToHealthInfo(reading);
  if (now != info()) Report(now);
}

Health::Health(services::ServiceObserver observer, HealthSettings settings)
    : events_("health", std::move(observer)), settings_(settings) {}

Health::~Health() {
  Stop();
}

void Health::Start() {
  Stop();
  service_ = ndk::SharedRefBase::make<Service>(settings_.period, events_.observer());
  fake::Declare(services::kHealthInstance);
  running_ =
      std::make_unique<RunningService>(service_, service_, services::kHealthInstance, events_);
}

void Health::Stop() {
  if (service_ == nullptr) return;
  // First: a client must not wait for a declared service that never comes.
  fake::Undeclare(services::kHealthInstance);
  running_ = nullptr;
  service_ = nullptr;
  events_.Send(ServiceEvent::Kind::kDied);
}

Health::HealthInfo Health::info() const {
  return service_ != nullptr ? service_->info() : ToHealthInfo({});
}

std::vector<PowerSupply> Health::supplies() const {
  return service_ != nullptr ? service_->supplies() : std::vector<PowerSupply>{};
}

size_t Health::callback_count() const {
  return service_ != nullptr ? service_->callback_count() : 0;
}

}  // namespace norvik::qel::linux_machine
