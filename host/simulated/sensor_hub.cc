// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/simulated/sensor_hub.h"

#include <utility>

#include "quorvel/fake/deliveries.h"

namespace norvik::qel::simulated {

using services::SensorReading;
using services::SensorService;
using services::ServiceEvent;

SensorHub::SensorHub(services::ServiceObserver observer) : events_("sensor", std::move(observer)) {
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
    service_ = ndk::SharedRefBase::make<SensorService>(sensors_, events_.observer());
    std::vector<SensorReading> readings;
    for (const auto& [type, value] : latest_) readings.push_back({.type = type, .value = value});
    service_->Report(readings);
    process_ = std::make_unique<fake::ServiceProcess>("sensor");
    process_->AddService(service_, services::kSensorInstance);
  }
  events_.Send(ServiceEvent::Kind::kStarted);
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

std::shared_ptr<SensorService> SensorHub::service() const {
  std::lock_guard<std::mutex> lock(lock_);
  return service_;
}

}  // namespace norvik::qel::simulated
