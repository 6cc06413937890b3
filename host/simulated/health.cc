// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/simulated/health.h"

#include <mutex>
#include <utility>

#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/thread_annotations.h"
#include "scripted_service.h"

namespace norvik::qel::simulated {

using services::HealthOperation;
using services::ServiceEvent;

// Shared with the service, whose threads may still be inside a call when Health is destroyed.
struct Health::Phone {
  fake::Scripts<HealthOperation> scripts;
  std::mutex lock;  // also held while the state is reported, to keep reports in order
  HealthInfo info QUORVEL_GUARDED_BY(lock);
  Running<std::shared_ptr<Service>> running QUORVEL_GUARDED_BY(lock);
};

class Health::Service : public services::HealthService, public ScriptedService<HealthOperation> {
 public:
  // The caller holds the phone's lock.
  Service(const std::shared_ptr<Phone>& phone, services::ServiceObserver observer)
      : HealthService(phone->info, std::move(observer)),
        ScriptedService(phone->scripts),
        phone_(phone) {}

 private:
  ndk::ScopedAStatus Permit(HealthOperation operation) override {
    return Next(operation).ToStatus();
  }

  void ChangeChargingPolicy(
      aidl::android::hardware::health::BatteryChargingPolicy policy) override {
    std::lock_guard<std::mutex> lock(phone_->lock);
    phone_->info.chargingPolicy = policy;
    Report(phone_->info);
  }

  const std::shared_ptr<Phone> phone_;
};

Health::Health(services::ServiceObserver observer)
    : events_("health", std::move(observer)), phone_(std::make_shared<Phone>()) {
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
    auto service = ndk::SharedRefBase::make<Service>(phone_, events_.observer());
    service->Report(phone_->info);  // for the observer: no callback is registered yet
    auto process = std::make_unique<fake::ServiceProcess>("health");
    process->AddService(service, services::kHealthInstance);
    phone_->running = {std::move(process), std::move(service)};
  }
  events_.Send(ServiceEvent::Kind::kStarted);
}

void Health::Kill() {
  Running<std::shared_ptr<Service>> running;
  {
    std::lock_guard<std::mutex> lock(phone_->lock);
    std::swap(running, phone_->running);
  }
  if (simulated::Kill(running, phone_->scripts)) events_.Send(ServiceEvent::Kind::kDied);
}

void Health::Change(const std::function<void(HealthInfo&)>& change) {
  std::lock_guard<std::mutex> lock(phone_->lock);
  change(phone_->info);
  if (phone_->running.service != nullptr) phone_->running.service->Report(phone_->info);
}

Health::HealthInfo Health::info() const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  return phone_->info;
}

size_t Health::callback_count() const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  const auto& service = phone_->running.service;
  return service != nullptr ? service->callback_count() : 0;
}

fake::Script& Health::on(HealthOperation operation) {
  return phone_->scripts.on(operation);
}

}  // namespace norvik::qel::simulated
