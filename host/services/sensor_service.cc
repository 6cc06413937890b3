// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/services/sensor_service.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace norvik::qel::services {

using fake::ISensorEvents;
using fake::SensorDescription;

namespace {

ASensorEvent MakeEvent(const SensorDescription& sensor, float value) {
  ASensorEvent event = {};
  event.version = sizeof event;
  event.sensor = sensor.handle;
  event.type = sensor.type;
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  event.timestamp = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
  event.data[0] = value;
  return event;
}

// Groups the readings of a delivery by sensor.
void AddTo(std::vector<SensorReport>& reports, const SensorReading& reading) {
  const auto found = std::find_if(reports.begin(), reports.end(), [&](const SensorReport& report) {
    return report.type == reading.type;
  });
  SensorReport& report =
      found != reports.end() ? *found : reports.emplace_back(SensorReport{reading.type, {}});
  report.values.push_back(reading.value);
}

ndk::ScopedAStatus Refuse(const char* why) {
  return ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, why);
}

}  // namespace

SensorService::SensorService(std::vector<SensorDescription> sensors, ServiceObserver observer)
    : events_("sensor", std::move(observer)),
      sensors_(std::make_move_iterator(sensors.begin()), std::make_move_iterator(sensors.end())) {}

void SensorService::Add(SensorDescription sensor) {
  std::lock_guard<std::mutex> lock(lock_);
  sensors_.push_back(std::move(sensor));
}

// One-way calls fail only if the receiver's process has died, which needs no action.
void SensorService::Report(const std::vector<SensorReading>& readings) {
  std::lock_guard<std::mutex> lock(lock_);
  std::vector<ASensorEvent> events;
  std::vector<SensorReport> reports;
  for (const SensorReading& reading : readings) {
    const SensorDescription* sensor = FindLocked(&SensorDescription::type, reading.type);
    if (sensor == nullptr) continue;
    events.push_back(MakeEvent(*sensor, reading.value));
    latest_[sensor->handle] = events.back();
    AddTo(reports, reading);
  }
  for (SensorReport& report : reports) events_.SendReport(std::move(report));
  for (const auto& entry : queues_) {
    const Queue& queue = entry.second;
    std::vector<ASensorEvent> wanted;
    std::copy_if(events.begin(), events.end(), std::back_inserter(wanted),
                 [&](const ASensorEvent& event) { return queue.enabled.contains(event.sensor); });
    if (!wanted.empty()) static_cast<void>(queue.events->onEvents(wanted));
  }
}

void SensorService::Forget(int32_t type) {
  std::lock_guard<std::mutex> lock(lock_);
  const SensorDescription* sensor = FindLocked(&SensorDescription::type, type);
  if (sensor == nullptr || latest_.erase(sensor->handle) == 0) return;
  events_.SendReport(SensorReport{.type = type, .values = {}});
}

void SensorService::SendUnasked(const std::vector<ASensorEvent>& events) {
  std::lock_guard<std::mutex> lock(lock_);
  for (const auto& [id, queue] : queues_) static_cast<void>(queue.events->onEvents(events));
}

size_t SensorService::queue_count() const {
  std::lock_guard<std::mutex> lock(lock_);
  return queues_.size();
}

int SensorService::listeners(int32_t type) const {
  std::lock_guard<std::mutex> lock(lock_);
  const SensorDescription* sensor = FindLocked(&SensorDescription::type, type);
  if (sensor == nullptr) return 0;
  return static_cast<int>(std::count_if(queues_.begin(), queues_.end(), [&](const auto& entry) {
    return entry.second.enabled.contains(sensor->handle);
  }));
}

std::optional<SensorRequest> SensorService::last_request(int32_t type) const {
  std::lock_guard<std::mutex> lock(lock_);
  const SensorDescription* sensor = FindLocked(&SensorDescription::type, type);
  if (sensor == nullptr) return std::nullopt;
  const auto found = last_requests_.find(sensor->handle);
  if (found == last_requests_.end()) return std::nullopt;
  return found->second;
}

ndk::ScopedAStatus SensorService::getSensorList(std::vector<SensorDescription>* out) {
  std::lock_guard<std::mutex> lock(lock_);
  out->assign(sensors_.begin(), sensors_.end());
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus SensorService::getDefaultSensor(int32_t type,
                                                   std::optional<SensorDescription>* out) {
  std::lock_guard<std::mutex> lock(lock_);
  const SensorDescription* sensor = FindLocked(&SensorDescription::type, type);
  if (sensor != nullptr) *out = *sensor;
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus SensorService::createEventQueue(const std::shared_ptr<ISensorEvents>& events,
                                                   int64_t* out_queue) {
  std::lock_guard<std::mutex> lock(lock_);
  *out_queue = next_queue_++;
  queues_[*out_queue] = {.events = events, .enabled = {}};
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus SensorService::destroyEventQueue(int64_t queue) {
  Queue gone;
  std::vector<const SensorDescription*> disabled;
  {
    std::lock_guard<std::mutex> lock(lock_);
    const auto found = queues_.find(queue);
    if (found == queues_.end()) return Refuse("no such queue");
    gone = std::move(found->second);
    queues_.erase(found);
    for (const auto& [handle, request] : gone.enabled)
      disabled.push_back(FindLocked(&SensorDescription::handle, handle));
  }
  for (const SensorDescription* sensor : disabled) {
    events_.Send(ServiceEvent::Kind::kUnregistered, sensor->name);
  }
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus SensorService::enableSensor(int64_t queue, int32_t handle, int32_t period_us,
                                               int64_t max_latency_us) {
  const SensorDescription* sensor = nullptr;
  bool newly = false;
  {
    std::lock_guard<std::mutex> lock(lock_);
    sensor = FindLocked(&SensorDescription::handle, handle);
    if (sensor == nullptr) return Refuse("no such sensor");
    const auto found = queues_.find(queue);
    if (found == queues_.end()) return Refuse("no such queue");
    const SensorRequest request = {.period_us = period_us, .max_latency_us = max_latency_us};
    newly = found->second.enabled.insert_or_assign(handle, request).second;
    last_requests_[handle] = request;
    const auto latest = latest_.find(handle);
    if (newly && latest != latest_.end()) {
      static_cast<void>(found->second.events->onEvents({latest->second}));
    }
  }
  if (newly) events_.Send(ServiceEvent::Kind::kRegistered, sensor->name);
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus SensorService::disableSensor(int64_t queue, int32_t handle) {
  const SensorDescription* sensor = nullptr;
  {
    std::lock_guard<std::mutex> lock(lock_);
    const auto found = queues_.find(queue);
    if (found == queues_.end() || found->second.enabled.erase(handle) == 0) {
      return Refuse("the sensor is not enabled on this queue");
    }
    sensor = FindLocked(&SensorDescription::handle, handle);
  }
  events_.Send(ServiceEvent::Kind::kUnregistered, sensor->name);
  return ndk::ScopedAStatus::ok();
}

const SensorDescription* SensorService::FindLocked(int32_t SensorDescription::*key,
                                                   int32_t value) const {
  const auto found = std::find_if(sensors_.begin(), sensors_.end(),
                                  [=](const auto& sensor) { return sensor.*key == value; });
  return found != sensors_.end() ? &*found : nullptr;
}

}  // namespace norvik::qel::services
