// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/simulated/health.h"

#include <atomic>
#include <utility>

#include "quorvel/fake/service_manager.h"

namespace norvik::qel::simulated {

using services::HealthOperation;
using services::ServiceEvent;

// Every call follows the phone's script first, then does its normal work.
class Health::Service : public services::HealthService {
 public:
  // The caller holds the phone's lock.
  Service(std::shared_ptr<Phone> phone, services::ServiceObserver observer)
      : HealthService(phone->info, std::move(observer)), phone_(std::move(phone)) {}

  // Called before the process is killed. From now on this service takes no outcomes from the
  // scripts: they are for its successor.
  void End() { ended_ = true; }

 private:
  ndk::ScopedAStatus Permit(HealthOperation operation) override {
    const fake::Outcome outcome = phone_->scripts.on(operation).Next(&ended_);
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

Health::Health(services::ServiceObserver observer) : observer_(std::move(observer)) {
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
  fake::Declare(services::kHealthInstance);
}

void Health::Undeclare() {
  fake::Undeclare(services::kHealthInstance);
}

void Health::Start() {
  Kill();
  {
    std::lock_guard<std::mutex> lock(phone_->lock);
    process_ = std::make_unique<fake::ServiceProcess>("health");
    service_ = ndk::SharedRefBase::make<Service>(phone_, observer_);
    service_->Report(phone_->info);  // for the observer: no callback is registered yet
    process_->AddService(service_, services::kHealthInstance);
  }
  if (observer_) observer_({.kind = ServiceEvent::Kind::kStarted, .service = "health"});
}

void Health::Kill() {
  std::unique_ptr<fake::ServiceProcess> process;
  std::shared_ptr<Service> service;
  {
    std::lock_guard<std::mutex> lock(phone_->lock);
    process.swap(process_);
    service.swap(service_);
  }
  if (process == nullptr) return;
  service->End();
  process->Kill();
  phone_->scripts.OpenGates();
  if (observer_) observer_({.kind = ServiceEvent::Kind::kDied, .service = "health"});
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

}  // namespace norvik::qel::simulated
