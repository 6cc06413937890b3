// The processes of the pretended device. The program that runs all this is the host process; each
// ServiceProcess is another one.
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

// The two ways between processes. Each process has a pool of threads for either.
enum class Transport {
  kBinder,    // AIDL
  kHwBinder,  // HIDL
};

// One synchronous call under way, shared between the caller and the thread that serves it, so that
// a caller released by a death leaves nothing behind that is its own.
struct PendingCall {
  std::mutex lock;
  std::condition_variable changed;
  bool done QUORVEL_GUARDED_BY(lock) = false;
  bool dead QUORVEL_GUARDED_BY(lock) = false;  // the serving process died first
};

// The notices of one death that have not been given yet. Each of them holds this until its
// recipients have returned; the last to let go lets everything go on that waits.
//
// What a dead process has sent arrives after the notices of its death and before anything that its
// successor sends to the same object:
// 1. Kill() marks the process as dead and makes this in one step, under the process's lock.
// 2. Kill() holds it until every notice has taken its own hold and the dead process can send no
//    more. So it lives until all notices have been given.
// 3. A one-way call looks for it on its binder thread, as the last thing before it runs. Either the
//    sender was alive then, and the call had begun before the death; or this is still there, and
//    the call waits for it; or all notices have been given.
// 4. A call that waits stays at the head of its object's queue. The successor's calls are behind.
// No lock and no thread is held by a call that waits: it is posted again.
class PendingNotices {
 public:
  PendingNotices() = default;
  PendingNotices(const PendingNotices&) = delete;
  PendingNotices& operator=(const PendingNotices&) = delete;
  ~PendingNotices();

  // Runs `next` at the end, on the thread that lets go last: it must not block.
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
  // The process on whose behalf the calling thread runs: the host's, unless it is a thread of a
  // service or inside a Scope.
  static std::shared_ptr<Process> Current();

  // Lets the calling thread act for a process for a while.
  class Scope {
   public:
    explicit Scope(std::shared_ptr<Process> process);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    std::shared_ptr<Process> before_;
  };

  // How this process reaches `binder`: the object itself if it lives here, else the one reference
  // that this process has to it.
  [[nodiscard]] ndk::SpAIBinder Reach(AIBinder* binder);

  // Runs `task` on a thread of this process on this process's behalf.
  void Post(Transport transport, std::function<void()> task);
  // Does so and waits for its end. False when the process is dead, or dies meanwhile.
  [[nodiscard]] bool RunAndWait(Transport transport, std::function<void()> task);

  bool dead() const;
  // Null while it lives, and when all notices of its death have been given.
  std::shared_ptr<PendingNotices> pending_notices() const;
  void Kill();

  ThreadPool& pool(Transport transport) {
    return transport == Transport::kBinder ? *binder_pool_ : *hwbinder_pool_;
  }

 private:
  friend class RemoteBinder;
  // Kept by each RemoteBinder for the two processes that it connects. A dead process holds nothing
  // any more: false.
  [[nodiscard]] bool AddOutbound(uint64_t target_id, std::shared_ptr<Anchor> reference);
  void RemoveOutbound(uint64_t target_id, const std::shared_ptr<Anchor>& reference);
  void AddInbound(std::shared_ptr<Anchor> reference);
  void RemoveInbound(const std::shared_ptr<Anchor>& reference);

  const std::shared_ptr<ThreadPool> binder_pool_;
  const std::shared_ptr<ThreadPool> hwbinder_pool_;
  mutable std::mutex lock_;
  bool dead_ QUORVEL_GUARDED_BY(lock_) = false;
  std::weak_ptr<PendingNotices> pending_notices_ QUORVEL_GUARDED_BY(lock_);  // of its death
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
