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

// Has the devices read at every event of their subsystem, and in between only while the service has
// listeners for what the kernel does not announce.
//
// Threads: made, run and destroyed by the owner, one at a time.
class Watcher {
 public:
  using Tell = std::function<void(std::string notice)>;

  // Listens, then has the devices read for the first time: what changes in between is read again.
  // Notices are told on this thread first, on the watcher's own later.
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
  // For poll().
  int TimeUntilDue() const;
  void TellNotices();

  const std::shared_ptr<WatchedClass> watched_;
  const Tell tell_;
  // The thread's while that runs.
  DeviceMonitor monitor_;
  std::optional<Clock::time_point> due_;
  std::thread thread_;
};

}  // namespace norvik::qel::linux_machine
