// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the random tests of the three families share: the clients and what they are promised, the
// steps that all families have, and the checks of promises that all have.
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

// What the library's threads and the driver share.
struct Shared {
  std::mutex lock;
  std::condition_variable changed;
  // Counts steps; a row of pauses that end is several.
  int moment QUORVEL_GUARDED_BY(lock) = 0;
};
// Leaked on purpose: a broken library may call at the very end.
Shared& TheShared();

// What becomes of changes that come while a client is inside a call.
enum class Fold { kLatest, kOldest };

// The worker thread that calls a group of clients. Kept inside a call by Hold(), so that what comes
// meanwhile folds for certain.
class Worker {
 public:
  explicit Worker(Fold fold) : fold_(fold) {}

  // The next call does not return before Release().
  void Hold();
  void Release();
  // Deinit...() has returned: another call ends the program.
  void Close();
  struct State {
    bool busy;     // a call is being kept, or will be
    bool holding;  // a call is being kept
    bool folding;  // one was kept before this step, so that what this step causes folds
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

// A cookie: what its callback has heard, and what it has to hear.
//
// Threads: Hear() runs on the library's; everything else on the driver's, while all threads sleep.
// Locks: none to hold; the methods take the shared one.
class Client {
 public:
  // `reported` has all values that it can hear, now and later.
  Client(std::string name, Worker& worker, const std::set<int>& reported)
      : name_(std::move(name)), worker_(worker), reported_(reported) {}

  void Hear(int value);
  static void Hear(int value, void* cookie) { static_cast<Client*>(cookie)->Hear(value); }

  // A change that this client must be told. While the worker is kept, changes fold.
  void Expect(int value);
  // There are others that it may be told, or their order is a matter of luck: for this time it has
  // to hear the last one that is due (when changes fold into the oldest: any), and otherwise only
  // what was reported.
  void Loosen();
  // Leaves; what is on its way may still arrive.
  void Leave();
  void Join();

  // With all threads asleep: what has been heard is what had to be.
  void Check();

 private:
  bool IsAsDue() const QUORVEL_REQUIRES(TheShared().lock);

  const std::string name_;
  Worker& worker_;
  const std::set<int>& reported_;
  std::vector<int> heard_ QUORVEL_GUARDED_BY(TheShared().lock);
  std::vector<int> due_ QUORVEL_GUARDED_BY(TheShared().lock);
  // The last one due stands for all that came while the worker was kept.
  bool folded_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool loose_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool member_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
};

// A phone, its handles and clients, and the steps that can be done with them.
class Family {
 public:
  virtual ~Family();
  Family(const Family&) = delete;
  Family& operator=(const Family&) = delete;

  const Grammar& grammar() const { return grammar_; }
  // A whole run, once. Starts the first threads. Ends the program when a promise is broken, or when
  // a step takes longer than `patience`.
  void Run(const Steps& steps, std::chrono::seconds patience);

 protected:
  // Steps can hold and release these workers.
  Family(Fold fold, const Words& workers);

  // All handles. A run has several rows of them when a step is Renew().
  virtual void Begin() = 0;
  virtual void End() = 0;
  // Holds the present state against the promises, and keeps it as the state before the next step.
  virtual void Check(const Step& step) = 0;

  template <typename Derived>
  void Add(const std::string& verb, size_t weight, std::vector<Words> arguments,
           void (Derived::*act)(const Step&)) {
    grammar_.push_back({verb, weight, std::move(arguments), [this, act](const Step& step) {
                          (static_cast<Derived*>(this)->*act)(step);
                        }});
  }
  // "fault NAME OUTCOME": of the next call of each of these functions.
  void AddFault(const std::string& name, const Words& outcomes,
                const std::vector<fake::Script*>& scripts);
  void Renew(const Step& /*step*/) {
    End();
    Begin();
  }
  // "deaths held" keeps death notifications back, "deaths delivered" no longer.
  void Deaths(const Step& step);

  // A new handle, whose workers have these names.
  void Init(void (*init)(void**), void** handle, const Words& workers);
  // The end of one, which may begin inside a call, and 5 times `change` meanwhile.
  void Deinit(void (*deinit)(void**), void** handle, const Words& workers,
              const std::function<void(int)>& change);
  Worker& worker(const std::string& name) const { return *workers_.at(name); }
  // The one of that name. Lives as long as the program, to hear what it must not.
  Client& ClientOf(const std::string& worker, const std::string& name,
                   const std::set<int>& reported);
  void CheckClients();

  // Waits until no thread can continue by itself.
  static void Settle();
  // Whether a step before this one has scripted faults, which this one's calls meet.
  bool faulty() const { return faulty_; }
  bool deaths_held() const { return deaths_ != nullptr; }
  // `start` of a service that may run; the library hears of its death only when both are over.
  void Restart(const std::function<void()>& start);

  // How many workers paused before this step, and whether it has ended their pauses.
  size_t pausing_before() const { return pausing_before_; }
  bool ticked() const { return ticked_; }
  // How often it has, since a worker began to pause.
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

// Takes everything from the beginning of `text` that matches the regular expression, time and
// again: the groups of each time.
std::vector<Words> TakeAll(std::string& text, const std::string& pattern);
// Takes what has to be there, once.
Words Take(std::string& text, const std::string& pattern);

std::unique_ptr<Family> MakeBattery();
std::unique_ptr<Family> MakeSensor();
std::unique_ptr<Family> MakeThermal();
// By the name of a family: "battery", "sensor" or "thermal".
std::unique_ptr<Family> MakeFamily(const std::string& name);

}  // namespace norvik::qel::random_test
