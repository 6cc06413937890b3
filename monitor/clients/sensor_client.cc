// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/sensor_client.h"

#include <errno.h>

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

#include "clients/read_dump.h"

namespace norvik::qel::monitor {

namespace {

// Any number does: the handle has no other client.
constexpr int kId = 1;

}  // namespace

SensorClient::SensorClient(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {
  for (size_t i = 0; i < cookies_.size(); ++i) {
    cookies_[i] = {.property = kSensorProperties[i], .events = events_.get()};
  }
  InitSensorInfo(&handle_);
  if (handle_ == nullptr) {
    throw std::system_error(ENOMEM, std::generic_category(), "cannot make a sensor object");
  }
}

SensorClient::~SensorClient() {
  DeinitSensorInfo(&handle_);
}

bool SensorClient::Register(const SensorProperty& property) {
  Cookie& cookie = CookieOf(property);
  const int result = property.register_callback(handle_, kId, OnValue, &cookie);
  if (result != 0 && result != -ENOSYS) return false;
  cookie.state = result == 0 ? State::kRegistered : State::kAbsent;
  return true;
}

bool SensorClient::Register() {
  return std::all_of(kSensorProperties.begin(), kSensorProperties.end(),
                     [&](const SensorProperty* property) { return Register(*property); });
}

bool SensorClient::Deregister(const SensorProperty& property) {
  const State state = std::exchange(CookieOf(property).state, State::kUnregistered);
  return state != State::kRegistered || property.deregister_callback(handle_, kId) == 0;
}

bool SensorClient::Deregister() {
  bool all = true;
  for (const SensorProperty* property : kSensorProperties) all &= Deregister(*property);
  return all;
}

SensorClient::Cookie& SensorClient::CookieOf(const SensorProperty& property) {
  return *std::find_if(cookies_.begin(), cookies_.end(),
                       [&](const Cookie& candidate) { return candidate.property == &property; });
}

std::vector<const SensorProperty*> SensorClient::sensors() const {
  return SensorsIn(State::kRegistered);
}

std::vector<const SensorProperty*> SensorClient::absent_sensors() const {
  return SensorsIn(State::kAbsent);
}

std::vector<const SensorProperty*> SensorClient::SensorsIn(State state) const {
  std::vector<const SensorProperty*> found;
  for (const Cookie& cookie : cookies_) {
    if (cookie.state == state) found.push_back(cookie.property);
  }
  return found;
}

void SensorClient::OnValue(int number, void* cookie) {
  Cookie& mine = *static_cast<Cookie*>(cookie);
  mine.events->Post(ValueChange{.property = mine.property,
                                .old_value = std::exchange(mine.last, number),
                                .new_value = number,
                                .thread = std::this_thread::get_id()});
}

std::string SensorClient::Dump() {
  return ReadDump(DumpSensorInfo, handle_);
}

}  // namespace norvik::qel::monitor
