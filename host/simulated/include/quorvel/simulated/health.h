// The simulated phone's battery and its health service, under remote control.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <mutex>

#include "quorvel/fake/script.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/health_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::simulated {

// The battery's state, the scripts and the call counts belong to the phone: they outlive the
// service, which can die and come back.
//
// Threads: any, but one at a time starts and kills the service.
class Health {
 public:
  using HealthInfo = aidl::android::hardware::health::HealthInfo;

  // Declares the instance; the service does not run yet. The battery is at 50 percent and has 10
  // cycles; no charger is online.
  explicit Health(services::ServiceObserver observer = nullptr);
  // Kills the service and takes the declaration back.
  ~Health();
  Health(const Health&) = delete;
  Health& operator=(const Health&) = delete;

  void Declare();
  void Undeclare();

  // A new process with a new service under the old name. Kills the one that runs, if any.
  void Start();
  void Kill();

  // Changes the state; a running service reports it.
  void Change(const std::function<void(HealthInfo&)>& change);
  void SetLevel(int percent);
  void SetCycleCount(int cycles);
  void SetWirelessOnline(bool online);
  void SetDockOnline(bool online);
  HealthInfo info() const;

  // How many callbacks the running service holds; 0 while none runs.
  size_t callback_count() const;

  // What the next calls of an operation do, and how often it has been called.
  fake::Script& on(services::HealthOperation operation);

 private:
  class Service;
  // Shared with the service, whose threads may still be inside a call when the phone goes away.
  struct Phone {
    std::array<fake::Script, static_cast<size_t>(services::HealthOperation::kCount)> scripts;
    std::mutex lock;  // held while the state changes and is reported, so that both agree
    HealthInfo info QUORVEL_GUARDED_BY(lock);
  };

  const services::ServiceObserver observer_;
  const std::shared_ptr<Phone> phone_ = std::make_shared<Phone>();
  std::unique_ptr<fake::ServiceProcess> process_ QUORVEL_GUARDED_BY(phone_->lock);
  std::shared_ptr<Service> service_ QUORVEL_GUARDED_BY(phone_->lock);
};

}  // namespace norvik::qel::simulated
