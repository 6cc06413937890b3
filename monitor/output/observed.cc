// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/observed.h"

#include <algorithm>

namespace norvik::qel::monitor {

void Observed::Note(const Event& event) {
  if (const auto* device_event = std::get_if<DeviceEvent>(&event.what)) {
    ++device_events_[{device_event->kind, device_event->service}];
    return;
  }
  const auto& change = std::get<ValueChange>(event.what);
  ++callbacks_;
  Heard& heard = heard_[change.property];
  heard.last = change.new_value;
  ++heard.callbacks;
  threads_.insert(change.thread);
}

int Observed::callbacks(const Property& property) const {
  const auto found = heard_.find(&property);
  return found != heard_.end() ? found->second.callbacks : 0;
}

int Observed::count(DeviceEvent::Kind kind, std::string_view service) const {
  const auto found = device_events_.find({kind, std::string(service)});
  return found != device_events_.end() ? found->second : 0;
}

int Observed::thermal_deaths() const {
  return count(DeviceEvent::Kind::kServiceDied, kThermalService) +
         count(DeviceEvent::Kind::kServiceDied, kHidlThermalService);
}

int Observed::relinks() const {
  return std::max(0, count(DeviceEvent::Kind::kCallbackRegistered, kHealthService) - 1);
}

Value Observed::value(const Property& property) const {
  const auto found = heard_.find(&property);
  return found != heard_.end() ? found->second.last : Value();
}

std::string Counted(int count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace norvik::qel::monitor
