// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/simulated/sensor_hub.h"

#include <utility>

#include "quorvel/fake/deliveries.h"

namespace norvik::qel::simulated {

using services::SensorReading;
using services::SensorService;
using services::ServiceEvent;

SensorHub::SensorHub(services::ServiceObserver observer) : observer_(std::move(observer)) {
  fake::DropWake();
}

SensorHub::~SensorHub() {
  if (process_ == nullptr) return;
  process_->Kill();
  static_cast<void>(fake::WaitUntilDelivered());
}

void SensorHub::Add(int32_t type, const std::string& name, int32_t min_delay_us) {
  std::lock_guard<std::mutex> lock(lock_);
  sensors_.push_back({.handle = static_cast<int32_t>(sensors_.size()) + 1,
                      .type = type,
                      .name = name,
                      .vendor = "simulated",
                      .string_type = "simulated." + name,
                      .min_delay_us = min_delay_us});
}

void SensorHub::Start() {
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (service_ != nullptr) return;
    service_ = ndk::SharedRefBase::make<SensorService>(sensors_, observer_);
    std::vector<SensorReading> readings;
    for (const auto& [type, value] : latest_) readings.push_back({.type = type, .value = value});
    service_->Report(readings);
    process_ = std::make_unique<fake::ServiceProcess>("sensor");
    process_->AddService(service_, services::kSensorInstance);
  }
  if (observer_) observer_({.kind = ServiceEvent::Kind::kStarted, .service = "sensor"});
}

void SensorHub::Report(const std::vector<SensorReading>& readings) {
  std::lock_guard<std::mutex> lock(lock_);
  for (const SensorReading& reading : readings) latest_[reading.type] = reading.value;
  if (service_ != nullptr) service_->Report(readings);
}

void SensorHub::Forget(int32_t type) {
  std::lock_guard<std::mutex> lock(lock_);
  latest_.erase(type);
  if (service_ != nullptr) service_->Forget(type);
}

void SensorHub::SendUnasked(const std::vector<ASensorEvent>& events) {
  if (const auto running = service()) running->SendUnasked(events);
}

size_t SensorHub::queue_count() const {
  const auto running = service();
  return running != nullptr ? running->queue_count() : 0;
}

int SensorHub::listeners(int32_t type) const {
  const auto running = service();
  return running != nullptr ? running->listeners(type) : 0;
}

std::optional<services::SensorRequest> SensorHub::last_request(int32_t type) const {
  const auto running = service();
  return running != nullptr ? running->last_request(type) : std::nullopt;
}

std::shared_ptr<SensorService> SensorHub::service() const {
  std::lock_guard<std::mutex> lock(lock_);
  return service_;
}

}  // namespace norvik::qel::simulated
