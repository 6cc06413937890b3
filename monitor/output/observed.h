// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Counts events and keeps the last values. The demo's results come from here only.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "clients/event.h"

namespace norvik::qel::monitor {

// Threads: the main thread.
class Observed {
 public:
  void Note(const Event& event);

  // The number of callbacks for all properties, or for one.
  int callbacks() const { return callbacks_; }
  int callbacks(std::string_view key) const;
  int count(DeviceEvent::Kind kind, std::string_view service) const;
  // Deaths of the AIDL and the HIDL thermal service.
  int thermal_deaths() const;
  // Registrations with the health service after the first one.
  int relinks() const;
  // The value in the last callback for the property; unknown if there was none.
  Value value(std::string_view key) const;
  // The threads that callbacks ran on.
  const std::set<std::thread::id>& threads() const { return threads_; }

 private:
  struct Heard {
    Value last;
    int callbacks = 0;
  };

  int callbacks_ = 0;
  std::map<std::pair<DeviceEvent::Kind, std::string>, int> device_events_;
  std::map<std::string, Heard, std::less<>> heard_;  // by key
  std::set<std::thread::id> threads_;
};

// The number of callbacks for the given properties.
template <typename Properties>
int CallbacksOf(const Properties& properties, const Observed& observed) {
  int callbacks = 0;
  for (const Property* property : properties) callbacks += observed.callbacks(property->key);
  return callbacks;
}

// "1 death", "2 deaths".
std::string Counted(int count, const std::string& noun);

}  // namespace norvik::qel::monitor
