// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The processes of the simulated phone. The program itself is the host process; each ServiceProcess
// is another process.
#pragma once

#include <android/binder_auto_utils.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "quorvel/fake/thread_annotations.h"
#include "thread_pool.h"

namespace norvik::qel::fake {

class Anchor;
class LocalBinder;
class RemoteBinder;

// The two transports between processes. A process has a thread pool for each.
enum class Transport {
  kBinder,    // AIDL
  kHwBinder,  // HIDL
};

// One synchronous call in flight. The caller and the serving thread share it: if a death releases
// the caller first, the serving thread uses nothing of the caller's.
struct PendingCall {
  std::mutex lock;
  std::condition_variable changed;
  bool done QUORVEL_GUARDED_BY(lock) = false;
  bool dead QUORVEL_GUARDED_BY(lock) = false;  // the serving process died first
};

// The undelivered notifications of one death. Each notification holds a reference to this object
// until its recipients have returned. The last reference released runs the deferred calls.
//
// Claim: the queued one-way calls of a dead process run after the notifications of its death, and
// before any call of its successor to the same object.
// 1. Kill() marks the process as dead and publishes this object in one step, under the process's
//    lock.
// 2. Kill() holds a reference until every notification has one and the dead process can send no
//    more. So this object exists until all notifications have been delivered.
// 3. The last thing that a one-way call does before it runs is to look for this object. There are
//    three cases:
//    a. The sender is alive: the call begins before the death.
//    b. This object exists: the call is deferred until it is gone.
//    c. This object is gone: all notifications have been delivered.
// 4. A deferred call stays at the head of its object's queue. So the calls of the successor run
//    after it.
// A deferred call holds no lock and no thread: it is posted again.
class PendingDeathNotifications {
 public:
  PendingDeathNotifications() = default;
  PendingDeathNotifications(const PendingDeathNotifications&) = delete;
  PendingDeathNotifications& operator=(const PendingDeathNotifications&) = delete;
  ~PendingDeathNotifications();

  // Runs `next` on the thread that releases the last reference. `next` must not block.
  void Then(std::function<void()> next);

 private:
  std::mutex lock_;  // innermost
  std::vector<std::function<void()>> waiting_ QUORVEL_GUARDED_BY(lock_);
};

// Locks: lock_ guards the tables only; nothing is called and no reference is released under it.
class Process : public std::enable_shared_from_this<Process> {
 public:
  explicit Process(const std::string& name);

  static const std::shared_ptr<Process>& Host();
  // The process for which the calling thread runs: the host, unless it is a thread of a service or
  // inside a Scope.
  static std::shared_ptr<Process> Current();

  // Makes the calling thread run for `process` during its own lifetime.
  class Scope {
   public:
    explicit Scope(std::shared_ptr<Process> process);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    std::shared_ptr<Process> before_;
  };

  // The binder that this process uses for `binder`: the object itself if it is an object of this
  // process, otherwise this process's single reference to it. Empty if the process of the object
  // has died.
  [[nodiscard]] ndk::SpAIBinder Reach(AIBinder* binder);

  // Runs `task` on a thread of this process, as this process.
  void Post(Transport transport, std::function<void()> task);
  // The same, and waits for the end of `task`. False if the process is dead or dies meanwhile.
  [[nodiscard]] bool RunAndWait(Transport transport, std::function<void()> task);

  bool dead() const;
  // Null while the process lives, and after all notifications of its death have been delivered.
  std::shared_ptr<PendingDeathNotifications> pending_death_notifications() const;
  void Kill();

  ThreadPool& pool(Transport transport) {
    return transport == Transport::kBinder ? *binder_pool_ : *hwbinder_pool_;
  }

 private:
  friend class RemoteBinder;
  // Each RemoteBinder enters itself in the tables of the two processes that it connects. False if
  // this process is dead: it holds no references.
  [[nodiscard]] bool AddOutbound(uint64_t target_id, std::shared_ptr<Anchor> reference);
  void RemoveOutbound(uint64_t target_id, const std::shared_ptr<Anchor>& reference);
  void AddInbound(std::shared_ptr<Anchor> reference);
  void RemoveInbound(const std::shared_ptr<Anchor>& reference);

  const std::shared_ptr<ThreadPool> binder_pool_;
  const std::shared_ptr<ThreadPool> hwbinder_pool_;
  mutable std::mutex lock_;
  bool dead_ QUORVEL_GUARDED_BY(lock_) = false;
  std::weak_ptr<PendingDeathNotifications> pending_death_notifications_
      QUORVEL_GUARDED_BY(lock_);  // of this process's death
  // Guards no member: one new reference is made at a time. Taken before lock_.
  std::mutex reach_lock_;
  // References held here, by target.
  std::map<uint64_t, std::shared_ptr<Anchor>> outbound_ QUORVEL_GUARDED_BY(lock_);
  // References to objects that live here.
  std::set<std::shared_ptr<Anchor>> inbound_ QUORVEL_GUARDED_BY(lock_);
  // Being served here.
  std::set<std::shared_ptr<PendingCall>> calls_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::fake
