// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Another process of the simulated phone. Its objects are remote for all other processes.
#pragma once

#include <android/binder_interface_utils.h>
#include <android/hidl/base/1.0/IBase.h>

#include <memory>
#include <string>

namespace norvik::qel::fake {

class Process;

// A process that offers services. Calls on them run on its own threads. It holds references to the
// callbacks that it receives until it dies.
//
// Threads: any.
class ServiceProcess {
 public:
  explicit ServiceProcess(const std::string& name);
  // Kills the process unless it is dead.
  ~ServiceProcess();
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;

  // Registers `service` under an instance name, as a service's main() does. False if the process is
  // dead.
  bool AddService(const std::shared_ptr<ndk::ICInterface>& service, const std::string& instance);
  // The same for a HIDL service. `name` is used for each of its interfaces.
  bool AddHidlService(const ::android::sp<::android::hidl::base::V1_0::IBase>& service,
                      const std::string& name = "default");

  // Ends the process like a crash: its names leave the service manager, calls in flight fail, its
  // references are dropped, and every recipient linked to one of its objects receives a death
  // notification. Does not wait for the notifications, which arrive on the receivers' binder
  // threads.
  void Kill();
  bool alive() const;

 private:
  const std::shared_ptr<Process> process_;
};

}  // namespace norvik::qel::fake
