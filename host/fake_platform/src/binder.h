// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// AIBinder: an object of a process, or the reference that another process has to it.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "process.h"
#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

// A weak reference to a binder. AIBinder_Weak and the tables of a Process hold one.
class Anchor {
 public:
  explicit Anchor(AIBinder* binder) : binder_(binder) {}
  // A strong reference, empty if the binder is gone.
  [[nodiscard]] ndk::SpAIBinder Promote();
  // Called just before the binder is freed.
  void Clear();

 private:
  std::mutex lock_;  // innermost
  AIBinder* binder_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::fake

// The class of an interface's objects. An object owns its `args` and passes them to `destroy` at
// its end.
struct AIBinder_Class {
  const char* descriptor;
  std::shared_ptr<ndk::ICInterface>& (*object)(void* args);  // null for HIDL objects
  void (*destroy)(void* args);
  norvik::qel::fake::Transport transport = norvik::qel::fake::Transport::kBinder;
};

struct AIBinder {
  AIBinder();
  virtual ~AIBinder();
  AIBinder(const AIBinder&) = delete;
  AIBinder& operator=(const AIBinder&) = delete;

  void IncStrong() { strong_.fetch_add(1, std::memory_order_relaxed); }
  [[nodiscard]] bool TryIncStrong();  // false if the count has reached 0
  void DecStrong();                   // the last one deletes the object
  int32_t strong() const { return strong_.load(std::memory_order_relaxed); }

  virtual norvik::qel::fake::LocalBinder* AsLocal() { return nullptr; }
  virtual norvik::qel::fake::RemoteBinder* AsRemote() { return nullptr; }

  const std::shared_ptr<norvik::qel::fake::Anchor> anchor;

 private:
  std::atomic<int32_t> strong_{1};
};

namespace norvik::qel::fake {

// An object of `process`, with the queue of one-way calls sent to it.
class LocalBinder final : public AIBinder {
 public:
  LocalBinder(const AIBinder_Class* clazz, void* args, std::shared_ptr<Process> process);
  ~LocalBinder() override;
  LocalBinder* AsLocal() override { return this; }

  const std::shared_ptr<Process>& process() const { return process_; }
  const AIBinder_Class* clazz() const { return clazz_; }
  const std::shared_ptr<ndk::ICInterface>& object() const { return clazz_->object(args_); }
  void* args() const { return args_; }
  Transport transport() const { return clazz_->transport; }
  uint64_t id() const { return id_; }

  // Queues a one-way call of `sender`. Calls on one object run in order, one at a time.
  void PostOneway(std::shared_ptr<Process> sender, std::function<void(LocalBinder&)> run);

 private:
  struct OnewayCall {
    std::shared_ptr<Process> sender;
    std::function<void(LocalBinder&)> run;
  };

  void PostDrainLocked() QUORVEL_REQUIRES(lock_);
  // Runs the first call of the queue. If its sender has died, defers it until the notifications of
  // that death have been delivered.
  static void RunFirstOneway(ndk::SpAIBinder self);

  const AIBinder_Class* const clazz_;
  void* const args_;
  const std::shared_ptr<Process> process_;
  const uint64_t id_;  // never reused, unlike an address
  std::mutex lock_;    // nothing is called under it
  std::deque<OnewayCall> oneway_ QUORVEL_GUARDED_BY(lock_);
  // A task for the first call is posted, running or deferred.
  bool draining_ QUORVEL_GUARDED_BY(lock_) = false;
};

struct RecipientState;

// One successful link call. Its notification runs at most once, its onUnlinked exactly once.
struct Link {
  // A transition out of kLinked is atomic and decides what still runs.
  enum class State { kLinked, kTelling, kEnded };
  std::atomic<State> state{State::kLinked};
  std::function<void()> died;      // the notification
  std::function<void()> unlinked;  // may be empty
  const void* key = nullptr;       // identifies the link; for comparison only
  const AIBinder* who = nullptr;   // for comparison only
  std::weak_ptr<RecipientState> recipient;

  // Ends the link unless its notification has started. True if this call ended it.
  [[nodiscard]] bool End();
};

// The links of a recipient or of a HIDL proxy. A separate object, because its owner may be deleted
// at any time.
struct RecipientState {
  std::mutex lock;
  std::vector<std::shared_ptr<Link>> links QUORVEL_GUARDED_BY(lock);

  [[nodiscard]] std::shared_ptr<Link> TakeNewest(const AIBinder* who, const void* key);
  void Remove(const std::shared_ptr<Link>& link);
  // Ends all links without notifications. Called when the recipient is deleted.
  void EndAll();
};

// The reference of `holder` to an object of another process.
class RemoteBinder final : public AIBinder {
 public:
  RemoteBinder(LocalBinder* target, std::shared_ptr<Process> holder);
  ~RemoteBinder() override;
  RemoteBinder* AsRemote() override { return this; }

  bool alive() const;
  // The object. If either process has died: empty, and alive() is false from now on.
  [[nodiscard]] ndk::SpAIBinder Target();
  // Runs `call` on a thread of the object's process and waits for its end. If either process has
  // died or dies meanwhile: returns false, and alive() is false from now on.
  [[nodiscard]] bool CallAndWait(std::function<void(LocalBinder&)> call);
  // Sends a one-way call. If either process has died: returns false, and alive() is false from now
  // on. The check and the sending are atomic: a dead process sends nothing.
  [[nodiscard]] bool PostOneway(std::function<void(LocalBinder&)> call);
  // Sets alive() to false, after a call has failed because of a death.
  void NoteDead() QUORVEL_EXCLUDES(lock_);
  // Whether the object is of that class. Asks the object once; false if it cannot be asked.
  [[nodiscard]] bool IsOfClass(const AIBinder_Class* clazz);

  [[nodiscard]] binder_status_t Link(const std::shared_ptr<RecipientState>& recipient,
                                     std::shared_ptr<fake::Link> link);
  [[nodiscard]] binder_status_t Unlink(RecipientState& recipient, const void* key);

  // Called when the process of the object has died. Notifies the recipients on a thread of the
  // holder.
  void TargetDied();
  // Called when the process that holds this reference has died.
  void HolderDied();

 private:
  void PostDeathNotificationLocked(std::shared_ptr<PendingDeathNotifications> notifications)
      QUORVEL_REQUIRES(lock_);
  void TellRecipients() QUORVEL_EXCLUDES(lock_);
  void DropTarget() QUORVEL_EXCLUDES(lock_);

  const std::shared_ptr<Process> holder_;
  const std::shared_ptr<Process> target_process_;
  const uint64_t target_id_;
  const Transport transport_;
  mutable std::mutex lock_;                           // nothing is called or released under it
  ndk::SpAIBinder target_ QUORVEL_GUARDED_BY(lock_);  // empty after the death of either process
  const AIBinder_Class* class_ QUORVEL_GUARDED_BY(lock_) = nullptr;  // once known
  bool alive_ QUORVEL_GUARDED_BY(lock_) = true;                      // last known state
  bool obituary_posted_ QUORVEL_GUARDED_BY(lock_) = false;
  std::vector<std::shared_ptr<fake::Link>> links_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::fake
