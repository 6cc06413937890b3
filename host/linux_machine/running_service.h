// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A service of this machine while it runs.
#pragma once

#include <android/binder_interface_utils.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "device_files.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/services/service_event.h"
#include "watched_class.h"

namespace norvik::qel::linux_machine {

// The process of a service, and the thread that watches its subsystems: it reads the devices at
// every event. While the service has listeners for values that the kernel does not announce, it
// also reads them periodically.
//
// Threads: the owner makes and destroys it.
class RunningService {
 public:
  // Starts to receive events, then reads the devices for the first time: a change in between is
  // read again. Then starts the service. The notices of the first reading are sent on this thread,
  // later ones on the thread that watches.
  RunningService(std::shared_ptr<WatchedClass> watched,
                 const std::shared_ptr<ndk::ICInterface>& service, const char* instance,
                 services::EventSender events);
  // Ends the thread, then kills the process.
  ~RunningService();
  RunningService(const RunningService&) = delete;
  RunningService& operator=(const RunningService&) = delete;

 private:
  using Clock = std::chrono::steady_clock;

  // Starts to receive events. Returns 0 or an errno number.
  [[nodiscard]] int OpenMonitor();
  // The next event, empty if none waits. Never blocks.
  [[nodiscard]] std::optional<DeviceChange> NextChange();
  void EndEvents(int error);
  void Watch();
  void HearEvents();
  void ReadWhenDue();
  // The timeout for poll().
  int TimeUntilDue() const;
  void SendNotices();

  const std::shared_ptr<WatchedClass> watched_;
  const services::EventSender events_;
  fake::ServiceProcess process_;
  // Used only by the thread while it runs.
  Udev udev_;
  UdevMonitor monitor_;  // null if no events can be received
  std::optional<Clock::time_point> due_;
  std::thread thread_;
};

}  // namespace norvik::qel::linux_machine
