// What an AIBinder is: an object of some process, or a reference that another process has to it.
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

// Finds a binder again that may be gone: behind weak references and the tables of a Process.
class Anchor {
 public:
  explicit Anchor(AIBinder* binder) : binder_(binder) {}
  // One strong reference, or an empty one when the binder is gone.
  [[nodiscard]] ndk::SpAIBinder Promote();
  // The binder is about to be freed.
  void Clear();

 private:
  std::mutex lock_;  // innermost
  AIBinder* binder_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::fake

// Interface code describes its class with one of these. Objects of it own their `args` and give
// them to `destroy` at the end.
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
  [[nodiscard]] bool TryIncStrong();  // false when the count has reached 0
  void DecStrong();                   // the last one deletes
  int32_t strong() const { return strong_.load(std::memory_order_relaxed); }

  virtual norvik::qel::fake::LocalBinder* AsLocal() { return nullptr; }
  virtual norvik::qel::fake::RemoteBinder* AsRemote() { return nullptr; }

  const std::shared_ptr<norvik::qel::fake::Anchor> anchor;

 private:
  std::atomic<int32_t> strong_{1};
};

namespace norvik::qel::fake {

// An object of `process`, with the queue of one-way calls that have been sent to it.
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

  // Queues a one-way call of `sender`: calls of one object run in order, one at a time.
  void PostOneway(std::shared_ptr<Process> sender, std::function<void(LocalBinder&)> run);

 private:
  struct OnewayCall {
    std::shared_ptr<Process> sender;
    std::function<void(LocalBinder&)> run;
  };

  void PostDrainLocked() QUORVEL_REQUIRES(lock_);
  // Runs the first call of the queue, or has that done when the notices of its sender's death have
  // been given.
  static void RunFirstOneway(ndk::SpAIBinder self);

  const AIBinder_Class* const clazz_;
  void* const args_;
  const std::shared_ptr<Process> process_;
  const uint64_t id_;  // never used again, unlike an address
  std::mutex lock_;    // nothing is called under it
  std::deque<OnewayCall> oneway_ QUORVEL_GUARDED_BY(lock_);
  // A task that takes the first call is posted, running or waiting.
  bool draining_ QUORVEL_GUARDED_BY(lock_) = false;
};

struct RecipientState;

// One link call that succeeded. Its notice runs at most once, its onUnlinked exactly once.
struct Link {
  // Whoever ends a link decides in one step what still happens.
  enum class State { kLinked, kTelling, kEnded };
  std::atomic<State> state{State::kLinked};
  std::function<void()> died;      // the notice
  std::function<void()> unlinked;  // may be empty
  const void* key = nullptr;       // what tells it from others; for comparison only
  const AIBinder* who = nullptr;   // for comparison only
  std::weak_ptr<RecipientState> recipient;

  // Ends the link unless its notice has started; true when this call did it.
  [[nodiscard]] bool End();
};

// What a recipient, or a HIDL proxy, knows of its links, apart from its owner, which may be deleted
// at any time.
struct RecipientState {
  std::mutex lock;
  std::vector<std::shared_ptr<Link>> links QUORVEL_GUARDED_BY(lock);

  [[nodiscard]] std::shared_ptr<Link> TakeNewest(const AIBinder* who, const void* key);
  void Remove(const std::shared_ptr<Link>& link);
  // The recipient goes away: its links end silently.
  void EndAll();
};

// The reference of `holder` to an object of another process.
class RemoteBinder final : public AIBinder {
 public:
  RemoteBinder(LocalBinder* target, std::shared_ptr<Process> holder);
  ~RemoteBinder() override;
  RemoteBinder* AsRemote() override { return this; }

  bool alive() const;
  // The object behind; empty, and known to be dead from now on, when either process has died.
  [[nodiscard]] ndk::SpAIBinder Target();
  // Runs `call` on a thread of the object's process and waits for its end. False, and known to be
  // dead, when either process has died or dies meanwhile.
  [[nodiscard]] bool CallAndWait(std::function<void(LocalBinder&)> call);
  // Sends a one-way call; false, and known to be dead, when either process has died. In one step
  // with that: the dead send nothing.
  [[nodiscard]] bool PostOneway(std::function<void(LocalBinder&)> call);
  // Marks it as known to be dead: a call has been answered so.
  void NoteDead() QUORVEL_EXCLUDES(lock_);
  // Whether the object is of that class; asks it once. False as well when it cannot be asked.
  [[nodiscard]] bool IsOfClass(const AIBinder_Class* clazz);
  // Null until IsOfClass() has been true.
  const AIBinder_Class* associated_class() const;

  [[nodiscard]] binder_status_t Link(const std::shared_ptr<RecipientState>& recipient,
                                     std::shared_ptr<fake::Link> link);
  [[nodiscard]] binder_status_t Unlink(RecipientState& recipient, const void* key);

  // The process of the object has died: tells the recipients on a thread of the holder.
  void TargetDied();
  // The process that holds this reference has died.
  void HolderDied();

 private:
  bool AssociateLocked(const AIBinder_Class* clazz) QUORVEL_REQUIRES(lock_);
  void PostObituaryLocked(std::shared_ptr<PendingNotices> notices) QUORVEL_REQUIRES(lock_);
  void TellRecipients() QUORVEL_EXCLUDES(lock_);
  void DropTarget() QUORVEL_EXCLUDES(lock_);

  const std::shared_ptr<Process> holder_;
  const std::shared_ptr<Process> target_process_;
  const uint64_t target_id_;
  const Transport transport_;
  mutable std::mutex lock_;                           // nothing is called or released under it
  ndk::SpAIBinder target_ QUORVEL_GUARDED_BY(lock_);  // empty after the death of either process
  const AIBinder_Class* class_ QUORVEL_GUARDED_BY(lock_) = nullptr;  // once known
  bool associated_ QUORVEL_GUARDED_BY(lock_) = false;  // it has been asked for by that class
  bool alive_ QUORVEL_GUARDED_BY(lock_) = true;        // last known state
  bool obituary_posted_ QUORVEL_GUARDED_BY(lock_) = false;
  std::vector<std::shared_ptr<fake::Link>> links_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::fake
