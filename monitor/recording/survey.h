// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The events of a device that does not tell them, such as a phone, whose services report to their
// clients only.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "clients/client.h"
#include "clients/platform.h"

namespace norvik::qel::monitor {

// Tells what the platform answers, and what clients are called with, as events of the device.
//
// Threads: the main thread.
class Survey {
 public:
  using Listener = std::function<bool(const Event&)>;  // as Session::Setup::listener
  explicit Survey(Listener listener) : listener_(std::move(listener)) {}

  // Looks up the services and asks for the temperatures, and tells what has changed since the last
  // time. The client asks a new health service for its values.
  void Look(Client& client);
  // Tells the value of a client's call as a report, unless it is known already.
  void Note(const Event& event);
  // The families whose services have answered. Others may make a client wait.
  const std::set<std::string_view>& families() const { return families_; }

 private:
  void AskForTemperatures(WallTime time);
  void Tell(WallTime time, DeviceEvent::Kind kind, std::string_view service, Report report = {});

  const Listener listener_;
  std::map<std::string_view, ServiceState> running_;
  std::set<std::string_view> families_;
  BatteryReport battery_;
  std::map<std::string, TemperatureReport> temperatures_;  // by TYPE:NAME
};

}  // namespace norvik::qel::monitor
