#include "devices/simulated/health.h"

#include <atomic>
#include <utility>

#include "standin/service_manager.h"

namespace norvik::qel::simulated {

using devices::DeviceEvent;
using devices::HealthOperation;

// The service does what the phone's scripts say before it does its own work.
class Health::Service : public devices::HealthService {
 public:
  // Made with the phone's lock held.
  Service(std::shared_ptr<Phone> phone, devices::DeviceObserver observer)
      : HealthService(phone->info, std::move(observer)), phone_(std::move(phone)) {}

  // Its process is about to die: from now on it takes no outcomes that are meant for its successor.
  void End() { ended_ = true; }

 private:
  ndk::ScopedAStatus Permit(HealthOperation operation) override {
    const standin::Outcome outcome =
        phone_->scripts.at(static_cast<size_t>(operation)).Next(&ended_);
    return outcome.works() ? ndk::ScopedAStatus::ok() : outcome.ToStatus();
  }

  void ChangeChargingPolicy(
      aidl::android::hardware::health::BatteryChargingPolicy policy) override {
    std::lock_guard<std::mutex> lock(phone_->lock);
    phone_->info.chargingPolicy = policy;
    Report(phone_->info);
  }

  const std::shared_ptr<Phone> phone_;
  std::atomic<bool> ended_{false};
};

Health::Health(devices::DeviceObserver observer) : observer_(std::move(observer)) {
  using aidl::android::hardware::health::BatteryHealth;
  using aidl::android::hardware::health::BatteryStatus;
  HealthInfo& info = phone_->info;
  info.batteryPresent = true;
  info.batteryLevel = 50;
  info.batteryCycleCount = 10;
  info.batteryStatus = BatteryStatus::DISCHARGING;
  info.batteryHealth = BatteryHealth::GOOD;
  info.batteryTechnology = "Li-ion";
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
    std::lock_guard<std::mutex> lock(phone_->lock);
    process_ = std::make_unique<standin::ServiceProcess>("health");
    service_ = ndk::SharedRefBase::make<Service>(phone_, observer_);
    service_->Report(phone_->info);  // for the observer: nobody has registered yet
    process_->AddService(service_, devices::kHealthInstance);
  }
  if (observer_) observer_({.kind = DeviceEvent::Kind::kStarted, .service = "health"});
}

void Health::Kill() {
  std::unique_ptr<standin::ServiceProcess> process;
  std::shared_ptr<Service> service;
  {
    std::lock_guard<std::mutex> lock(phone_->lock);
    process.swap(process_);
    service.swap(service_);
  }
  if (process == nullptr) return;
  service->End();
  process->Kill();
  for (standin::Script& script : phone_->scripts) script.OpenGates();
  if (observer_) observer_({.kind = DeviceEvent::Kind::kDied, .service = "health"});
}

void Health::Change(const std::function<void(HealthInfo&)>& change) {
  std::lock_guard<std::mutex> lock(phone_->lock);
  change(phone_->info);
  if (service_ != nullptr) service_->Report(phone_->info);
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
  std::lock_guard<std::mutex> lock(phone_->lock);
  return phone_->info;
}

size_t Health::callback_count() const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  return service_ != nullptr ? service_->callback_count() : 0;
}

standin::Script& Health::on(HealthOperation operation) {
  return phone_->scripts.at(static_cast<size_t>(operation));
}

}  // namespace norvik::qel::simulated
