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

#include "thread_pool.h"

namespace norvik::qel::standin {

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
  bool done = false;
  bool dead = false;  // the serving process died first
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
  ndk::SpAIBinder Reach(AIBinder* binder);

  // Runs `task` on a thread of this process on this process's behalf.
  void Post(Transport transport, std::function<void()> task);
  // Does so and waits for its end. False when the process is dead, or dies meanwhile.
  bool RunAndWait(Transport transport, std::function<void()> task);

  bool dead() const;
  void Kill();

  ThreadPool& pool(Transport transport) {
    return transport == Transport::kBinder ? *binder_pool_ : *hwbinder_pool_;
  }

 private:
  friend class RemoteBinder;
  // Kept by each RemoteBinder for the two processes that it connects. A dead process holds nothing
  // any more: false.
  bool AddOutbound(uint64_t target_id, std::shared_ptr<Anchor> reference);
  void RemoveOutbound(uint64_t target_id, const std::shared_ptr<Anchor>& reference);
  void AddInbound(std::shared_ptr<Anchor> reference);
  void RemoveInbound(const std::shared_ptr<Anchor>& reference);

  const std::shared_ptr<ThreadPool> binder_pool_;
  const std::shared_ptr<ThreadPool> hwbinder_pool_;
  mutable std::mutex lock_;
  bool dead_ = false;
  std::mutex reach_lock_;  // taken before lock_: one new reference at a time
  std::map<uint64_t, std::shared_ptr<Anchor>> outbound_;  // references held here, by target
  std::set<std::shared_ptr<Anchor>> inbound_;             // references to objects that live here
  std::set<std::shared_ptr<PendingCall>> calls_;          // being served here
};

}  // namespace norvik::qel::standin
