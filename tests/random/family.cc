// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "family.h"

#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

#include "pauses.h"
#include "process_state.h"
#include "quiet.h"
#include "silent_process.h"
#include "waiting.h"

namespace norvik::qel::random_test {

namespace {

// The steps that have been done, the last one being under way. Fixed, for the signal handler.
char current_step[200] = "none";
int current_number = 0;

void OnHang(int /*signal*/) {
  char text[300];
  const int size = snprintf(text, sizeof text, "FAILED at step %d, %s: it does not end\n",
                            current_number, current_step);
  static_cast<void>(!write(STDERR_FILENO, text, static_cast<size_t>(size)));
  abort();
}

void SetCurrent(int number, const std::string& text) {
  current_number = number;
  snprintf(current_step, sizeof current_step, "%s", text.c_str());
}

}  // namespace

Shared& TheShared() {
  static Shared& shared = *new Shared;
  return shared;
}

void Fail(const std::string& what) {
  fprintf(stderr, "FAILED at step %d, %s: %s\n", current_number, current_step, what.c_str());
  fflush(stderr);
  abort();
}

void ExpectTrue(bool is_so, const std::string& what) {
  if (!is_so) Fail(what);
}

void Worker::Hold() {
  std::lock_guard<std::mutex> lock(TheShared().lock);
  hold_next_ = !holding_;
}

void Worker::Release() {
  std::lock_guard<std::mutex> lock(TheShared().lock);
  hold_next_ = holding_ = false;
  TheShared().changed.notify_all();
}

void Client::Hear(int value) {
  std::unique_lock<std::mutex> lock(TheShared().lock);
  fake::AssertHeld(TheShared().lock);
  if (closed_) Fail(name_ + " is called after the end of its handle");
  heard_.push_back(value);
  if (!std::exchange(worker_.hold_next_, false)) return;
  worker_.holding_ = true;
  worker_.held_since_ = TheShared().moment;
  TheShared().changed.wait(
      lock, [this]() QUORVEL_REQUIRES(TheShared().lock) { return !worker_.holding_; });
}

void Client::Expect(int value) {
  std::lock_guard<std::mutex> lock(TheShared().lock);
  if (!worker_.IsFolding() || !std::exchange(folded_, true)) {
    due_.push_back(value);
  } else if (worker_.fold == Fold::kLatest) {
    due_.back() = value;
  }
}

void Client::Leave() {
  std::lock_guard<std::mutex> lock(TheShared().lock);
  member_ = false;
  if (std::exchange(folded_, false)) due_.pop_back();
}

void Client::Join() {
  std::lock_guard<std::mutex> lock(TheShared().lock);
  member_ = true;
  if (worker_.IsFolding()) loose_ = true;  // it may have left a moment ago
}

std::string Client::Text() const {
  std::string text = name_ + " has heard";
  for (const int value : heard_) text += " " + std::to_string(value);
  text += heard_.empty() ? " nothing, due:" : ", due:";
  for (const int value : due_) text += " " + std::to_string(value);
  return text;
}

void Client::CheckLoosely(const std::set<int>& ever_reported) const {
  for (const int value : heard_) {
    if (!ever_reported.contains(value)) Fail(Text() + ": that was never reported");
  }
  if (worker_.holding_ || !member_ || due_.empty()) return;
  if (heard_.empty()) Fail(Text());
  if (worker_.fold == Fold::kLatest && heard_.back() != due_.back()) Fail(Text());
}

void Client::Check(const std::set<int>& ever_reported) {
  std::lock_guard<std::mutex> lock(TheShared().lock);
  if (loose_) {
    CheckLoosely(ever_reported);
  } else if (worker_.holding_ || !member_) {
    if (heard_.size() > due_.size() || !std::equal(heard_.begin(), heard_.end(), due_.begin())) {
      Fail(Text());
    }
  } else if (heard_ != due_) {
    Fail(Text());
  }
  if (worker_.holding_) return;
  heard_.clear();
  due_.clear();
  folded_ = loose_ = false;
}

std::vector<int> Client::Take() {
  std::lock_guard<std::mutex> lock(TheShared().lock);
  due_.clear();
  return std::exchange(heard_, {});
}

void Family::Do(const Step& step) {
  const bool several = step[0] == "tick" && step[1] == "12";
  for (int i = 0; i < (several ? 12 : 1); ++i) {
    {
      std::lock_guard<std::mutex> lock(TheShared().lock);
      ++TheShared().moment;
    }
    pausing_before_ = PausingWorkers();
    if (step[0] == "tick") {
      EndPauses();
    } else if (step[0] == "deaths") {
      deaths_.reset();
      if (step[1] == "held") {
        deaths_ = std::make_unique<fake::HoldDeliveries>(fake::Delivery::kDeathNotification);
      }
    } else {
      Act(step);
    }
    Settle();
    Check(step);
    faulty_ = step[0] == "fault";
    if (!faulty_) ClearFaults();
  }
}

void Family::Settle() {
  if (!WaitUntilQuiet()) Fail("threads are still at work after half a minute");
}

void Family::Restart(const std::function<void()>& restart) {
  if (deaths_held()) return restart();
  fake::HoldDeliveries held(fake::Delivery::kDeathNotification);
  restart();
  Settle();
}

void Family::Burst(int count, const std::function<void(int)>& change,
                   const std::function<void()>& churn) {
  std::thread changes([&] {
    for (int i = 1; i <= count; ++i) change(i);
  });
  for (int i = 0; i < count; ++i) churn();
  changes.join();
  Settle();
}

void Family::CheckBurst(Client& client, Fold fold, int before, int first, int last) {
  std::vector<int> heard = client.Take();
  while (!heard.empty() && heard.front() == before) heard.erase(heard.begin());
  ExpectTrue(!heard.empty(), "a client hears nothing of a burst");
  ExpectTrue(std::is_sorted(heard.begin(), heard.end()), "a client hears old changes of a burst");
  ExpectTrue(heard.front() >= first && heard.back() <= last,
             "a client hears what was never reported");
  if (fold == Fold::kLatest) ExpectEqual(heard.back(), last, "the last one heard of a burst");
  if (fold == Fold::kOldest) ExpectEqual(heard.front(), first, "the first one heard of a burst");
}

void Family::ExpectNoThreads(std::initializer_list<std::string_view> names) {
  ExpectTrue(Eventually([&] { return ThreadsNamed(names) == 0; }), "workers are left");
}

Grammar GrammarOf(const std::string& family) {
  Grammar grammar = family == "battery"  ? BatteryGrammar()
                    : family == "sensor" ? SensorGrammar()
                                         : ThermalGrammar();
  // The pauses end; 12 of them are as many as it takes to see a worker give up.
  grammar.push_back({"tick", 3, {{"1", "1", "1", "12"}}});
  if (family != "sensor") grammar.push_back({"deaths", 1, {{"held", "delivered"}}});
  return grammar;
}

void RunSteps(const std::string& family, const Steps& steps, std::chrono::seconds patience) {
  SetUpSilentProcess();
  signal(SIGALRM, OnHang);
  const auto begin = [&](int number, const std::string& text) {
    SetCurrent(number, text);
    alarm(static_cast<unsigned>(patience.count()));
  };
  begin(0, "init");
  const std::unique_ptr<Family> subject = family == "battery"  ? MakeBattery()
                                          : family == "sensor" ? MakeSensor()
                                                               : MakeThermal();
  int number = 0;
  for (const Step& step : steps) {
    begin(++number, StepText(step));
    subject->Do(step);
  }
  begin(number + 1, "deinit");
  subject->Finish();
  alarm(0);
}

}  // namespace norvik::qel::random_test
