// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The battery of the simulated phone and its health service, controlled by tests.
#pragma once

#include <functional>
#include <memory>

#include "quorvel/fake/platform_scripts.h"
#include "quorvel/services/health_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::simulated {

// The battery's state, the scripts and the call counts belong to the phone. They outlive the
// service, which can be killed and restarted.
//
// Threads: any. Start() and Kill() must not run concurrently.
class Health {
 public:
  using HealthInfo = aidl::android::hardware::health::HealthInfo;

  // Declares the instance; the service does not run yet. The battery is at 50 percent and has 10
  // cycles; no charger is online.
  explicit Health(services::ServiceObserver observer = nullptr);
  // Kills the service and removes the declaration.
  ~Health();
  Health(const Health&) = delete;
  Health& operator=(const Health&) = delete;

  void Declare();
  void Undeclare();

  // Starts a new process with a new service under the same name. Kills a running one first.
  void Start();
  void Kill();

  // Changes the state. A running service reports it.
  void Change(const std::function<void(HealthInfo&)>& change);
  void SetLevel(int percent) { Set(&HealthInfo::batteryLevel, percent); }
  void SetCycleCount(int cycles) { Set(&HealthInfo::batteryCycleCount, cycles); }
  void SetWirelessOnline(bool online) { Set(&HealthInfo::chargerWirelessOnline, online); }
  void SetDockOnline(bool online) { Set(&HealthInfo::chargerDockOnline, online); }
  HealthInfo info() const;

  // The number of callbacks registered with the running service. 0 if it is not running.
  size_t callback_count() const;

  // The script of an operation: outcomes of the next calls, count of calls.
  fake::Script& on(services::HealthOperation operation);
  // The same for a function of the platform. The whole phone shares these scripts.
  fake::Script& on(fake::BinderFunction function) { return platform_scripts_.on(function); }

 private:
  class Service;
  struct Phone;

  template <typename Value>
  void Set(Value HealthInfo::*field, Value value) {
    Change([=](HealthInfo& info) { info.*field = value; });
  }

  const services::EventSender events_;
  const fake::PlatformScripts platform_scripts_;
  const std::shared_ptr<Phone> phone_;
};

}  // namespace norvik::qel::simulated
