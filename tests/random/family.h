// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the random tests of the three families share: the clients and what they are promised, the
// steps that all have, and the end of the program when a promise is broken.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/thread_annotations.h"
#include "steps.h"

namespace norvik::qel::random_test {

// Prints the step under way and what is wrong, and ends the program.
[[noreturn]] void Fail(const std::string& what);
void ExpectTrue(bool is_so, const std::string& what);
template <typename T>
void ExpectEqual(T seen, T expected, const std::string& of) {
  if (seen == expected) return;
  Fail(of + " is " + std::to_string(seen) + ", expected " + std::to_string(expected));
}

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
  explicit Worker(Fold fold) : fold(fold) {}

  // The next call does not return before Release().
  void Hold();
  void Release();
  // Whether a call is being kept, or will be.
  bool busy() const QUORVEL_EXCLUDES(TheShared().lock) {
    std::lock_guard<std::mutex> lock(TheShared().lock);
    return holding_ || hold_next_;
  }
  bool holding() const QUORVEL_EXCLUDES(TheShared().lock) {
    std::lock_guard<std::mutex> lock(TheShared().lock);
    return holding_;
  }
  // Whether it was kept before this step, so that what this step causes folds.
  bool folding() const QUORVEL_EXCLUDES(TheShared().lock) {
    std::lock_guard<std::mutex> lock(TheShared().lock);
    return IsFolding();
  }

  const Fold fold;

 private:
  friend class Client;

  bool IsFolding() const QUORVEL_REQUIRES(TheShared().lock) {
    return holding_ && held_since_ < TheShared().moment;
  }

  bool hold_next_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool holding_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  int held_since_ QUORVEL_GUARDED_BY(TheShared().lock) = 0;
};

// One registration: what its callback has heard, and what it has to hear. The cookie.
//
// Threads: Hear() runs on the library's; everything else on the driver's, while all threads sleep.
// Locks: none to hold; the methods take the shared one.
class Client {
 public:
  Client(std::string name, Worker& worker) : name_(std::move(name)), worker_(worker) {}

  void Hear(int value);

  // A change that this client must be told. While the worker is kept, changes fold.
  void Expect(int value);
  // One that it may be told, or an order of events that is a matter of luck: for this time only
  // what is said in CheckLoosely() holds.
  void Loosen() {
    std::lock_guard<std::mutex> lock(TheShared().lock);
    loose_ = true;
  }
  // Leaves; what is on its way may still arrive.
  void Leave();
  void Join();
  // Deinit...() has returned: another call ends the program.
  void Close() {
    std::lock_guard<std::mutex> lock(TheShared().lock);
    closed_ = true;
  }

  // With all threads asleep: what has been heard is what had to be.
  void Check(const std::set<int>& ever_reported);
  // What has been heard since the last time, for steps with checks of their own.
  std::vector<int> Take();

 private:
  void CheckLoosely(const std::set<int>& ever_reported) const QUORVEL_REQUIRES(TheShared().lock);
  std::string Text() const QUORVEL_REQUIRES(TheShared().lock);

  const std::string name_;
  Worker& worker_;
  std::vector<int> heard_ QUORVEL_GUARDED_BY(TheShared().lock);
  std::vector<int> due_ QUORVEL_GUARDED_BY(TheShared().lock);
  // The last one due stands for all that came while the worker was kept.
  bool folded_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool loose_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool member_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
  bool closed_ QUORVEL_GUARDED_BY(TheShared().lock) = false;
};

class Family {
 public:
  Family() = default;
  virtual ~Family() = default;
  Family(const Family&) = delete;
  Family& operator=(const Family&) = delete;

  // Does a step, waits until all that comes of it is over, and checks.
  void Do(const Step& step);
  // Deinit...() of all handles while the device keeps reporting.
  virtual void Finish() = 0;

 protected:
  // What only the family knows to do. Settle() and Check() follow.
  virtual void Act(const Step& step) = 0;
  // Holds the present state against the promises, and keeps it as the state before the next step.
  virtual void Check(const Step& step) = 0;
  virtual void ClearFaults() = 0;

  // Waits until no thread can go on by itself.
  static void Settle();
  // Whether a step before this one has scripted faults, which this one's calls meet.
  bool faulty() const { return faulty_; }
  bool deaths_held() const { return deaths_ != nullptr; }
  // A kill and a start of which the library hears only when both are over.
  void Restart(const std::function<void()>& restart);
  void DeliverDeaths() { deaths_.reset(); }

  // Changes 1 to `count` on a thread of their own, beside `count` calls of `churn`.
  static void Burst(int count, const std::function<void(int)>& change,
                    const std::function<void()>& churn);
  // What a client has heard of changes `first` to `last`, before which the value was `before`: a
  // client that has come meanwhile has the others called with that, too.
  static void CheckBurst(Client& client, Fold fold, int before, int first, int last);
  // No thread of the library's is left that has one of these names.
  static void ExpectNoThreads(std::initializer_list<std::string_view> names);

  // How many workers paused before this step.
  size_t pausing_before() const { return pausing_before_; }

 private:
  std::unique_ptr<fake::HoldDeliveries> deaths_;
  bool faulty_ = false;
  size_t pausing_before_ = 0;
};

Grammar BatteryGrammar();
Grammar SensorGrammar();
Grammar ThermalGrammar();
std::unique_ptr<Family> MakeBattery();
std::unique_ptr<Family> MakeSensor();
std::unique_ptr<Family> MakeThermal();

// By the name of a family: "battery", "sensor" or "thermal".
Grammar GrammarOf(const std::string& family);
// A whole run. Ends the program when a promise is broken, or when a step takes longer than
// `patience`.
void RunSteps(const std::string& family, const Steps& steps, std::chrono::seconds patience);

}  // namespace norvik::qel::random_test
