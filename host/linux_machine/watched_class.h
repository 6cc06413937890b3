// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Kernel subsystems as a service of this machine sees them.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "device_files.h"
#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::linux_machine {

// An event of a device.
struct DeviceChange {
  enum class Kind {
    kThere,    // added or changed
    kRemoved,  // removed; its files may still exist for a moment
    kLost,     // overflow: an unknown number of events was dropped
  };
  Kind kind;
  std::string syspath = {};
};

// The devices of some subsystems, for the service that derives from this class first.
//
// A thread of the service's process may still be inside a call after the owner has stopped it.
// Therefore
// 1. everything that a call uses belongs to this class or to the derived service;
// 2. a call does not notify the observer itself: it leaves a notice and wakes the watching
//    thread (see RunningService), which the owner joins.
//
// Threads: any. Locks: reading_lock_ is held while devices are read and reported, so that an old
// reading never follows a newer one.
class WatchedClass {
 public:
  // `devices`: their name in messages, such as "thermal zones". `period`: how often to read values
  // that the kernel does not announce, while there are listeners.
  WatchedClass(std::vector<const char*> subsystems, std::string devices,
               std::chrono::milliseconds period);
  virtual ~WatchedClass();
  WatchedClass(const WatchedClass&) = delete;
  WatchedClass& operator=(const WatchedClass&) = delete;

  const std::vector<const char*>& subsystems() const { return subsystems_; }

  // Reads the devices and reports them.
  void Refresh() QUORVEL_EXCLUDES(reading_lock_);
  void Note(const std::vector<DeviceChange>& changes) QUORVEL_EXCLUDES(reading_lock_);
  // Called when no further events can be received.
  void NoteEndOfEvents(int error) QUORVEL_EXCLUDES(reading_lock_);
  [[nodiscard]] std::vector<std::string> TakeNotices() QUORVEL_EXCLUDES(reading_lock_);

  // Readable if notices wait, a registration has changed, or End() was called.
  int wake_fd() const { return wake_fd_; }
  void End();
  bool ending() const { return ending_; }

  std::chrono::milliseconds period() const { return period_; }
  virtual bool has_listeners() const = 0;
  virtual void ReadForListeners() QUORVEL_EXCLUDES(reading_lock_) { Refresh(); }

 protected:
  // For the derived service: forwards to `observer`, and wakes the watching thread at each
  // registration and unregistration.
  services::ServiceObserver WakingObserver(services::ServiceObserver observer) const;
  // Reads these devices and reports them. They are all devices that count.
  virtual void ReadLocked(const std::vector<std::string>& syspaths)
      QUORVEL_REQUIRES(reading_lock_) = 0;
  // Adds a notice for each fault, but only one until its device is removed.
  void NoticeFaultsLocked(const std::vector<Fault>& faults) QUORVEL_REQUIRES(reading_lock_);
  void AddNoticeLocked(std::string notice) QUORVEL_REQUIRES(reading_lock_);
  // Adds the notice if the first reading has no values, and whenever they have gone.
  void NoticeLackLocked(bool has_values, const char* notice) QUORVEL_REQUIRES(reading_lock_);

  mutable std::mutex reading_lock_;

 private:
  // Wakes the watching thread.
  void Wake() const;
  void ForgetFaultsOfOthersLocked(const std::vector<std::string>& syspaths)
      QUORVEL_REQUIRES(reading_lock_);

  const std::vector<const char*> subsystems_;
  const std::string devices_;
  const std::chrono::milliseconds period_;
  const int wake_fd_;
  std::atomic<bool> ending_ = false;
  // The devices to read: all that are listed at the start or after lost events, then only announced
  // ones. A listed device may not have its files yet, and a removed one may still be listed.
  std::set<std::string> announced_ QUORVEL_GUARDED_BY(reading_lock_);
  bool all_are_announced_ QUORVEL_GUARDED_BY(reading_lock_) = true;
  bool has_events_ QUORVEL_GUARDED_BY(reading_lock_) = true;
  bool had_values_ QUORVEL_GUARDED_BY(reading_lock_) = true;
  // Device and file.
  std::set<std::pair<std::string, std::string>> faults_told_ QUORVEL_GUARDED_BY(reading_lock_);
  std::vector<std::string> notices_ QUORVEL_GUARDED_BY(reading_lock_);
};

}  // namespace norvik::qel::linux_machine
