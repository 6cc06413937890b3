#include "devices/simulated/health.h"

#include <utility>

#include "standin/service_manager.h"

namespace norvik::qel::simulated {

using devices::DeviceEvent;
using devices::HealthOperation;

// The service does what the phone's scripts say before it does its own work.
class Health::Service : public devices::HealthService {
 public:
  Service(HealthInfo info, devices::DeviceObserver observer, std::shared_ptr<Scripts> scripts)
      : HealthService(std::move(info), std::move(observer)), scripts_(std::move(scripts)) {}

 private:
  ndk::ScopedAStatus Permit(HealthOperation operation) override {
    const standin::Outcome outcome = scripts_->at(static_cast<size_t>(operation)).Next();
    return outcome.works() ? ndk::ScopedAStatus::ok() : outcome.ToStatus();
  }

  const std::shared_ptr<Scripts> scripts_;
};

Health::Health(devices::DeviceObserver observer) : observer_(std::move(observer)) {
  using aidl::android::hardware::health::BatteryHealth;
  using aidl::android::hardware::health::BatteryStatus;
  info_.batteryPresent = true;
  info_.batteryLevel = 50;
  info_.batteryCycleCount = 10;
  info_.batteryStatus = BatteryStatus::DISCHARGING;
  info_.batteryHealth = BatteryHealth::GOOD;
  info_.batteryTechnology = "Li-ion";
  Declare();
}

Health::~Health() {
  Kill();
  Undeclare();
}

void Health::Declare() {
  standin::Declare(devices::kHealthInstance);
}

void Health::Undeclare() {
  standin::Undeclare(devices::kHealthInstance);
}

void Health::Start() {
  Kill();
  {
    std::lock_guard<std::mutex> lock(lock_);
    process_ = std::make_unique<standin::ServiceProcess>("health");
    service_ = ndk::SharedRefBase::make<Service>(info_, observer_, scripts_);
    process_->AddService(service_, devices::kHealthInstance);
  }
  if (observer_) observer_({.kind = DeviceEvent::Kind::kStarted, .service = "health"});
}

void Health::Kill() {
  std::unique_ptr<standin::ServiceProcess> process;
  std::shared_ptr<Service> service;
  {
    std::lock_guard<std::mutex> lock(lock_);
    process.swap(process_);
    service.swap(service_);
  }
  if (process == nullptr) return;
  process->Kill();
  for (standin::Script& script : *scripts_) script.OpenGates();
  if (observer_) observer_({.kind = DeviceEvent::Kind::kDied, .service = "health"});
}

void Health::Change(const std::function<void(HealthInfo&)>& change) {
  std::lock_guard<std::mutex> lock(lock_);
  change(info_);
  if (service_ != nullptr) service_->Report(info_);
}

void Health::SetLevel(int percent) {
  Change([=](HealthInfo& info) { info.batteryLevel = percent; });
}

void Health::SetCycleCount(int cycles) {
  Change([=](HealthInfo& info) { info.batteryCycleCount = cycles; });
}

void Health::SetWirelessOnline(bool online) {
  Change([=](HealthInfo& info) { info.chargerWirelessOnline = online; });
}

void Health::SetDockOnline(bool online) {
  Change([=](HealthInfo& info) { info.chargerDockOnline = online; });
}

Health::HealthInfo Health::info() const {
  std::lock_guard<std::mutex> lock(lock_);
  return info_;
}

size_t Health::callback_count() const {
  std::lock_guard<std::mutex> lock(lock_);
  return service_ != nullptr ? service_->callback_count() : 0;
}

standin::Script& Health::on(HealthOperation operation) {
  return scripts_->at(static_cast<size_t>(operation));
}

}  // namespace norvik::qel::simulated
