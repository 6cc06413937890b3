// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The thread that watches a subsystem for a service.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "device_monitor.h"
#include "watched_class.h"

namespace norvik::qel::linux_machine {

// Reads the devices at every event of their subsystem. While the service has listeners for values
// that the kernel does not announce, also reads them periodically.
//
// Threads: the owner makes, runs and destroys it.
class Watcher {
 public:
  using Tell = std::function<void(std::string notice)>;

  // Starts to receive events, then reads the devices for the first time: a change in between is
  // read again. `tell` is called on this thread here, and on the watcher's thread after Run().
  Watcher(std::shared_ptr<WatchedClass> watched, Tell tell);
  // Ends the thread.
  ~Watcher();
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  void Run(const char* thread_name);

 private:
  using Clock = std::chrono::steady_clock;

  void Watch();
  void HearEvents();
  void ReadWhenDue();
  // The timeout for poll().
  int TimeUntilDue() const;
  void TellNotices();

  const std::shared_ptr<WatchedClass> watched_;
  const Tell tell_;
  // Used only by the thread while it runs.
  DeviceMonitor monitor_;
  std::optional<Clock::time_point> due_;
  std::thread thread_;
};

}  // namespace norvik::qel::linux_machine
