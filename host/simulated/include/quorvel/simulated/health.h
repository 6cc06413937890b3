// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The battery of the simulated phone and its health service, controlled by tests.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "quorvel/fake/platform_scripts.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/fake/thread_annotations.h"
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
  void SetLevel(int percent);
  void SetCycleCount(int cycles);
  void SetWirelessOnline(bool online);
  void SetDockOnline(bool online);
  HealthInfo info() const;

  // The number of callbacks registered with the running service. 0 if it is not running.
  size_t callback_count() const;

  // The script of an operation: outcomes of the next calls, count of calls.
  fake::Script& on(services::HealthOperation operation) { return phone_->scripts.on(operation); }
  // The same for a function of the platform. The whole phone shares these scripts.
  fake::Script& on(fake::BinderFunction function) { return platform_scripts_.on(function); }

 private:
  class Service;
  // Shared with the service, whose threads may still be inside a call when this object is
  // destroyed.
  struct Phone {
    fake::Scripts<services::HealthOperation> scripts;
    std::mutex lock;  // also held while the state is reported, to keep reports in order
    HealthInfo info QUORVEL_GUARDED_BY(lock);
  };

  const services::ServiceObserver observer_;
  const fake::PlatformScripts platform_scripts_;
  const std::shared_ptr<Phone> phone_ = std::make_shared<Phone>();
  std::unique_ptr<fake::ServiceProcess> process_ QUORVEL_GUARDED_BY(phone_->lock);
  std::shared_ptr<Service> service_ QUORVEL_GUARDED_BY(phone_->lock);
};

}  // namespace norvik::qel::simulated
