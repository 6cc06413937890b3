// One run of a family: what was done and seen so far, and the end of the program when that is not
// what the model expects.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "choices.h"
#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::random_test {

// Threads: any.
class RandomRun {
 public:
  // `origin` tells how to run it again.
  explicit RandomRun(std::string origin);
  ~RandomRun();
  RandomRun(const RandomRun&) = delete;
  RandomRun& operator=(const RandomRun&) = delete;

  // A line of the account; the latest one is the one under way.
  void Note(std::string line);
  int steps() const;
  void CountStep();
  // Prints the account and ends the program.
  [[noreturn]] void Fail(const std::string& what) const;

  template <typename T>
  void Expect(const T& seen, const T& expected, const std::string& of) const {
    if (seen != expected) Fail(of + ": " + Text(seen) + ", expected " + Text(expected));
  }
  // Waits until nothing moves any more.
  void Settle() const;

 private:
  static std::string Text(const std::string& text) { return "\n" + text; }
  static std::string Text(int number) { return std::to_string(number); }
  template <typename T>
  static std::string Text(const std::vector<T>& values) {
    std::string text = "[";
    for (const T& value : values) text += " " + Text(value);
    return text + " ]";
  }
  template <typename A, typename B>
  static std::string Text(const std::pair<A, B>& pair) {
    return Text(pair.first) + ":" + Text(pair.second);
  }

  const std::string origin_;
  mutable std::mutex lock_;
  std::deque<std::string> lines_ QUORVEL_GUARDED_BY(lock_);
  int steps_ QUORVEL_GUARDED_BY(lock_) = 0;
};

// What clients of one handle were told, in the order in which they were. The handle's cookie.
//
// Threads: any.
class Calls {
 public:
  // Which client, what value.
  using Call = std::pair<int, int>;

  explicit Calls(const RandomRun& run) : run_(run) {}

  // The client's side. Ends the program after Close().
  void Put(int client, int value);
  // What there was since the last time.
  std::vector<Call> Take();

  // Keeps the next call from returning, until Release(). It is recorded before.
  void Hold();
  void Release();
  // Whether a call is being kept.
  bool holding() const;

  // Deinit...() has returned.
  void Close();

 private:
  const RandomRun& run_;
  mutable std::mutex lock_;
  std::condition_variable changed_;
  std::vector<Call> calls_ QUORVEL_GUARDED_BY(lock_);
  bool hold_ QUORVEL_GUARDED_BY(lock_) = false;
  bool holding_ QUORVEL_GUARDED_BY(lock_) = false;
  bool closed_ QUORVEL_GUARDED_BY(lock_) = false;
};

// A handle, its device and its model, going through a run step by step.
class Family {
 public:
  virtual ~Family() = default;
  // Does one thing, waits for what comes of it, and compares.
  virtual void Step(Choices& choices) = 0;
  // Ends the handle and sees to it that nobody is called any more.
  virtual void Finish() = 0;
};

std::unique_ptr<Family> MakeBattery(RandomRun& run);
std::unique_ptr<Family> MakeSensor(RandomRun& run);
std::unique_ptr<Family> MakeThermal(RandomRun& run);

// "battery", "sensor" or "thermal"; null for another name.
std::unique_ptr<Family> MakeFamily(const std::string& name, RandomRun& run);

// A whole run. Returns how many steps it had.
int RunRandomTest(const std::string& family, Choices choices, const std::string& origin);

}  // namespace norvik::qel::random_test
