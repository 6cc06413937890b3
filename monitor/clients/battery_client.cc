// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/battery_client.h"

#include <errno.h>

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

#include "clients/read_dump.h"

namespace norvik::qel::monitor {

BatteryClient::BatteryClient(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {
  for (size_t i = 0; i < cookies_.size(); ++i) {
    cookies_[i] = {.property = kBatteryProperties[i], .events = events_.get()};
  }
  InitBatteryInfo(&handle_);
  if (handle_ == nullptr) {
    throw std::system_error(ENOMEM, std::generic_category(), "cannot make a battery object");
  }
}

BatteryClient::~BatteryClient() {
  DeinitBatteryInfo(&handle_);
}

bool BatteryClient::Register(const BatteryProperty& property) {
  Cookie& cookie = CookieOf(property);
  cookie.is_registered = property.register_callback(handle_, OnValue, &cookie) == 0;
  return cookie.is_registered;
}

bool BatteryClient::Register() {
  return std::all_of(kBatteryProperties.begin(), kBatteryProperties.end(),
                     [&](const BatteryProperty* property) { return Register(*property); });
}

bool BatteryClient::Deregister(const BatteryProperty& property) {
  if (!std::exchange(CookieOf(property).is_registered, false)) return true;
  return property.deregister_callback(handle_, OnValue) == 0;
}

bool BatteryClient::Deregister() {
  bool all = true;
  for (const BatteryProperty* property : kBatteryProperties) all &= Deregister(*property);
  return all;
}

BatteryClient::Cookie& BatteryClient::CookieOf(const BatteryProperty& property) {
  return *std::find_if(cookies_.begin(), cookies_.end(),
                       [&](const Cookie& candidate) { return candidate.property == &property; });
}

void BatteryClient::OnValue(int number, void* cookie) {
  Cookie& mine = *static_cast<Cookie*>(cookie);
  const Value value = Interpret(*mine.property, number);
  mine.events->Post(ValueChange{.property = mine.property,
                                .old_value = std::exchange(mine.last, value),
                                .new_value = value,
                                .thread = std::this_thread::get_id()});
}

std::optional<Value> BatteryClient::Read(const BatteryProperty& property) {
  const int number = property.get(handle_, /*use_cached=*/false);
  if (number == -EAGAIN || number == -EINVAL) return std::nullopt;
  return Interpret(property, number);
}

std::string BatteryClient::Dump() {
  return ReadDump(DumpBatteryInfo, handle_);
}

}  // namespace norvik::qel::monitor
