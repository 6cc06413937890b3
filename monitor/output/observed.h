// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What has really been seen: the demo claims nothing else.
#pragma once

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

  // Of all properties, or of one.
  int callbacks() const { return callbacks_; }
  int callbacks(const Property& property) const;
  int count(DeviceEvent::Kind kind, std::string_view service) const;
  // Of both kinds of thermal services.
  int thermal_deaths() const;
  // Links to the health service after the first.
  int relinks() const;
  // As the callbacks heard it last.
  Value value(const Property& property) const;
  // The threads that callbacks ran on.
  const std::set<std::thread::id>& threads() const { return threads_; }

 private:
  struct Heard {
    Value last;
    int callbacks = 0;
  };

  int callbacks_ = 0;
  std::map<std::pair<DeviceEvent::Kind, std::string>, int> device_events_;
  std::map<const Property*, Heard> heard_;
  std::set<std::thread::id> threads_;
};

// Of the properties of a family.
template <typename Properties>
int CallbacksOf(const Properties& properties, const Observed& observed) {
  int callbacks = 0;
  for (const Property* property : properties) callbacks += observed.callbacks(*property);
  return callbacks;
}

// "1 death", "2 deaths".
std::string Counted(int count, const std::string& noun);

}  // namespace norvik::qel::monitor
