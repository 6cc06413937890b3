// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A client of the library's battery family.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "clients/battery_properties.h"
#include "clients/event_queue.h"

namespace norvik::qel::monitor {

// Owns a handle. What its callbacks hear goes to the queue.
//
// Threads: the main thread; the callbacks come on the library's.
class BatteryClient {
 public:
  explicit BatteryClient(std::shared_ptr<EventQueue> events);
  // No callback comes afterwards.
  ~BatteryClient();
  BatteryClient(const BatteryClient&) = delete;
  BatteryClient& operator=(const BatteryClient&) = delete;

  // For one property, or for all four. False when the library refuses.
  [[nodiscard]] bool Register(const BatteryProperty& property);
  [[nodiscard]] bool Register();
  // From one, or from all that has been registered.
  [[nodiscard]] bool Deregister(const BatteryProperty& property);
  [[nodiscard]] bool Deregister();
  // Asks the service; nothing when it cannot be asked.
  std::optional<Value> Read(const BatteryProperty& property);
  std::string Dump();

 private:
  // What a callback is handed back. Lives until the handle is gone.
  struct Cookie {
    const BatteryProperty* property = nullptr;
    EventQueue* events = nullptr;
    Value last = {};             // touched by callbacks only, which come one at a time
    bool is_registered = false;  // touched by the main thread only
  };

  static void OnValue(int number, void* cookie);

  Cookie& CookieOf(const BatteryProperty& property);

  const std::shared_ptr<EventQueue> events_;
  std::array<Cookie, kBatteryProperties.size()> cookies_;
  void* handle_ = nullptr;
};

}  // namespace norvik::qel::monitor
