// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The common part of the random tests: clients with the calls that they must receive, and the steps
// and checks that all three families have.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "hang_guard.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/script.h"
#include "quorvel/fake/thread_annotations.h"
#include "steps.h"

namespace norvik::qel::random_test {

// State shared by the library's threads and the driver.
struct Shared {
  std::mutex lock;
  std::condition_variable changed;
  // The number of steps so far. A tick of 12 pauses counts as 12.
  int moment QUORVEL_GUARDED_BY(lock) = 0;
};
// Leaked on purpose: a broken library may call a client while the process exits.
Shared& TheShared();

// The change that is delivered of several that arrive while a client is inside a call.
enum class Fold { kLatest, kOldest };

// A worker thread of the library that calls a group of clients. Hold() keeps it inside a call, so
// that changes that arrive meanwhile certainly fold.
class Worker {
 public:
  explicit Worker(Fold fold) : fold_(fold) {}

  // The next call does not return before Release().
  void Hold();
  void Release();
  // Called after Deinit...() has returned: any further call ends the program.
  void Close();
  struct State {
    bool busy;     // a call is held, or the next one will be
    bool holding;  // a call is held
    bool folding;  // a call has been held since before this step, so changes of this step fold
  };
  State state() const;

 private:
  friend class Client;

  bool IsFolding() const QUORVEL_REQUIRES(TheShared().lock) {
    return holding_ && held_since_ < TheShared().moment;
  }

  const Fold fold_;
  bool hold_next_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool holding_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool closed_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  int held_since_ QUORVEL_GUARDED_BY(TheShared().lock) = 0;
};

// The cookie of a registration: the values that the callback has received and must receive.
//
// Threads: Hear() runs on the library's threads. All else runs on the driver's thread while all
// other threads sleep.
// Locks: the methods take the shared lock.
class Client {
 public:
  // `reported` holds all values that the client may receive; the caller adds to it later.
  Client(std::string name, Worker& worker, const std::set<int>& reported)
      : name_(std::move(name)), worker_(worker), reported_(reported) {}

  void Hear(int value);
  static void Hear(int value, void* cookie) { static_cast<Client*>(cookie)->Hear(value); }

  // The client must receive this value. While a call is held, values fold.
  void Expect(int value);
  // Weakens the next Check(), for a step whose values or order are not determined: any reported
  // value is allowed, but the last one due must arrive last (Fold::kOldest: at least one value).
  void Loosen();
  // The client has left. Calls that are already in progress may still arrive.
  void Leave();
  void Join();

  // Ends the program unless the received values are those that were due. All threads must sleep.
  void Check();

 private:
  bool IsAsDue() const QUORVEL_REQUIRES(TheShared().lock);

  const std::string name_;
  Worker& worker_;
  const std::set<int>& reported_;
  std::vector<int> heard_ QUORVEL_GUARDED_BY(TheShared().lock);
  std::vector<int> due_ QUORVEL_GUARDED_BY(TheShared().lock);
  // The last value due stands for all values that arrived while the call was held.
  bool folded_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool loose_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool member_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
};

// A simulated phone, its handles and clients, and the steps of a random test.
class Family {
 public:
  virtual ~Family();
  Family(const Family&) = delete;
  Family& operator=(const Family&) = delete;

  const Grammar& grammar() const { return grammar_; }
  // Runs all steps; called once. Starts the first threads. Ends the program if a check fails or a
  // step takes longer than `patience`.
  void Run(const Steps& steps, std::chrono::seconds patience);

 protected:
  // `workers` are the names that the steps "hold" and "release" accept.
  Family(Fold fold, const Words& workers);

  // Create and destroy all handles. Renew() does so during a run.
  virtual void Begin() = 0;
  virtual void End() = 0;
  // Checks the state after a step, and keeps it as the state before the next step.
  virtual void Check(const Step& step) = 0;

  template <typename Derived>
  void Add(const std::string& verb, size_t weight, std::vector<Words> arguments,
           void (Derived::*act)(const Step&)) {
    grammar_.push_back({verb, weight, std::move(arguments), [this, act](const Step& step) {
                          (static_cast<Derived*>(this)->*act)(step);
                        }});
  }
  // Adds the step "fault NAME OUTCOME", which sets the outcome of the next call of each script.
  void AddFault(const std::string& name, const Words& outcomes,
                const std::vector<fake::Script*>& scripts);
  void Renew(const Step& /*step*/) {
    End();
    Begin();
  }
  // "deaths held" holds death notifications back; "deaths delivered" releases them.
  void Deaths(const Step& step);

  // Creates a handle whose workers have these names.
  void Init(void (*init)(void**), void** handle, const Words& workers);
  // Destroys the handle, possibly while a call is held, and runs `change` 5 times meanwhile.
  void Deinit(void (*deinit)(void**), void** handle, const Words& workers,
              const std::function<void(int)>& change);
  Worker& worker(const std::string& name) const { return *workers_.at(name); }
  // The client with the name. Lives as long as the program, so that a forbidden call is noticed.
  Client& ClientOf(const std::string& worker, const std::string& name,
                   const std::set<int>& reported);
  void CheckClients();

  // Waits until no thread can continue by itself.
  static void Settle();
  // Whether the previous step has scripted a fault, which calls of this step may meet.
  bool faulty() const { return faulty_; }
  bool deaths_held() const { return deaths_ != nullptr; }
  // Restarts a service with `start`. The library receives the death notification afterwards.
  void Restart(const std::function<void()>& start);

  // The number of workers that paused before this step, and whether this step ended their pauses.
  size_t pausing_before() const { return pausing_before_; }
  bool ticked() const { return ticked_; }
  // The number of steps that ended pauses, since a worker began to pause.
  size_t ticks() const { return ticks_; }

 private:
  void Do(const Step& step);
  void Tick(const Step& step);
  void Hold(const Step& step) { worker(step[1]).Hold(); }
  void Release(const Step& step) { worker(step[1]).Release(); }

  const Fold fold_;
  Grammar grammar_;
  int handles_ = 0;
  std::deque<Worker> all_workers_;
  std::map<std::string, Worker*> workers_;
  std::map<std::pair<Worker*, std::string>, Client> clients_;
  std::vector<fake::Script*> scripts_;
  std::unique_ptr<fake::HoldDeliveries> deaths_;
  bool faulty_ = false;
  size_t pausing_before_ = 0;
  bool ticked_ = false;
  size_t ticks_ = 0;
};

// Removes all consecutive matches of the pattern at the beginning of `text`, and returns the groups
// of each match.
std::vector<Words> TakeAll(std::string& text, const std::string& pattern);
// Removes a match that must occur exactly once.
Words Take(std::string& text, const std::string& pattern);

std::unique_ptr<Family> MakeBattery();
std::unique_ptr<Family> MakeSensor();
std::unique_ptr<Family> MakeThermal();
// `name` is "battery", "sensor" or "thermal".
std::unique_ptr<Family> MakeFamily(const std::string& name);

}  // namespace norvik::qel::random_test
