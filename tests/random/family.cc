// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "family.h"

#include <stdio.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <regex>
#include <thread>

#include "pauses.h"
#include "process_state.h"
#include "quiet.h"
#include "silent_process.h"
#include "waiting.h"

namespace norvik::qel::random_test {

namespace {

using Lock = std::lock_guard<std::mutex>;

}  // namespace

Shared& TheShared() {
  static Shared& shared = *new Shared;
  return shared;
}

void Worker::Hold() {
  const Lock lock(TheShared().lock);
  hold_next_ = !holding_;
}

void Worker::Release() {
  const Lock lock(TheShared().lock);
  hold_next_ = holding_ = false;
  TheShared().changed.notify_all();
}

void Worker::Close() {
  const Lock lock(TheShared().lock);
  closed_ = true;
}

Worker::State Worker::state() const {
  const Lock lock(TheShared().lock);
  return {.busy = holding_ || hold_next_, .holding = holding_, .folding = IsFolding()};
}

void Client::Hear(int value) {
  std::unique_lock<std::mutex> lock(TheShared().lock);
  fake::AssertHeld(TheShared().lock);
  if (worker_.closed_) Fail(name_ + " is called after the end of its handle");
  heard_.push_back(value);
  if (!std::exchange(worker_.hold_next_, false)) return;
  worker_.holding_ = true;
  worker_.held_since_ = TheShared().moment;
  TheShared().changed.wait(
      lock, [this]() QUORVEL_REQUIRES(TheShared().lock) { return !worker_.holding_; });
}

void Client::Expect(int value) {
  const Lock lock(TheShared().lock);
  if (!worker_.IsFolding() || !std::exchange(folded_, true)) {
    due_.push_back(value);
  } else if (worker_.fold_ == Fold::kLatest) {
    due_.back() = value;
  }
}

void Client::Loosen() {
  const Lock lock(TheShared().lock);
  loose_ = true;
}

void Client::Leave() {
  const Lock lock(TheShared().lock);
  member_ = false;
  if (std::exchange(folded_, false)) due_.pop_back();
}

void Client::Join() {
  const Lock lock(TheShared().lock);
  member_ = true;
  if (!worker_.IsFolding()) return;
  // A client that left a moment ago may still receive changes with the call that is in progress.
  loose_ = true;
  due_.clear();
}

bool Client::IsAsDue() const {
  for (const int value : heard_) {
    if (!reported_.contains(value)) return false;
  }
  const bool may_lack = worker_.holding_ || worker_.closed_ || !member_;
  if (!loose_ && !worker_.closed_) {
    return may_lack ? heard_.size() <= due_.size() &&
                          std::equal(heard_.begin(), heard_.end(), due_.begin())
                    : heard_ == due_;
  }
  if (may_lack || due_.empty()) return true;
  return !heard_.empty() && (worker_.fold_ == Fold::kOldest || heard_.back() == due_.back());
}

void Client::Check() {
  const Lock lock(TheShared().lock);
  if (!IsAsDue()) {
    std::string text = name_ + " has heard";
    for (const int value : heard_) text += " " + std::to_string(value);
    text += heard_.empty() ? " nothing, due:" : ", due:";
    for (const int value : due_) text += " " + std::to_string(value);
    Fail(text + (loose_ ? ", and perhaps others that were reported" : ""));
  }
  if (worker_.holding_) return;
  heard_.clear();
  due_.clear();
  folded_ = loose_ = false;
}

Family::Family(Fold fold, const Words& workers) : fold_(fold) {
  // Ends the workers' pauses once, or 12 times, which is enough to see a worker give up.
  Add("tick", 3, {{"1", "1", "1", "12"}}, &Family::Tick);
  Add("hold", 3, {workers}, &Family::Hold);
  Add("release", 3, {workers}, &Family::Release);
}

Family::~Family() {
  Settle();  // the services have ended
}

void Family::Run(const Steps& steps, std::chrono::seconds patience) {
  SetUpSilentProcess();
  static char current[200];  // static because a signal handler prints it
  const auto begin = [&](size_t number, const std::string& text) {
    snprintf(current, sizeof current, "step %zu, %s", number, text.c_str());
    RestartHangGuard(current, patience);
  };
  begin(0, "init");
  Begin();
  for (size_t i = 0; i < steps.size(); ++i) {
    begin(i + 1, StepText(steps[i]));
    Do(steps[i]);
  }
  begin(steps.size() + 1, "deinit");
  End();
  CheckClients();
  deaths_.reset();
}

void Family::Do(const Step& step) {
  for (int left = step[0] == "tick" ? std::stoi(step[1]) : 1; left > 0; --left) {
    {
      const Lock lock(TheShared().lock);
      ++TheShared().moment;
    }
    pausing_before_ = PausingWorkers();
    ticked_ = step[0] == "tick" && pausing_before_ > 0;
    ticks_ = pausing_before_ > 0 ? ticks_ + (ticked_ ? 1 : 0) : 0;
    VerbOf(grammar_, step)->act(step);
    Settle();
    Check(step);
    CheckClients();
    faulty_ = step[0] == "fault";
    if (faulty_) continue;
    for (fake::Script* script : scripts_) script->Clear();
  }
}

void Family::Tick(const Step& /*step*/) {
  EndPauses();
}

void Family::Deaths(const Step& step) {
  deaths_.reset();
  if (step[1] == "delivered") return;
  deaths_ = std::make_unique<fake::HoldDeliveries>(fake::Delivery::kDeathNotification);
}

void Family::AddFault(const std::string& name, const Words& outcomes,
                      const std::vector<fake::Script*>& scripts) {
  scripts_.insert(scripts_.end(), scripts.begin(), scripts.end());
  grammar_.push_back({"fault", 1, {{name}, outcomes}, [scripts](const Step& step) {
                        const fake::Outcome outcome =
                            step[2] == "failed"
                                ? fake::Outcome::Exception(EX_ILLEGAL_STATE, "not now")
                                : fake::Outcome{.status = step[2] == "dead" ? STATUS_DEAD_OBJECT
                                                                            : STATUS_UNKNOWN_ERROR};
                        for (fake::Script* script : scripts) script->Then(outcome);
                      }});
}

void Family::Init(void (*init)(void**), void** handle, const Words& workers) {
  for (const std::string& name : workers) workers_[name] = &all_workers_.emplace_back(fold_);
  init(handle);
  ExpectTrue(*handle != nullptr, "no handle");
  ++handles_;
}

void Family::Deinit(void (*deinit)(void**), void** handle, const Words& workers,
                    const std::function<void(int)>& change) {
  std::thread changes([&] {
    for (const std::string& name : workers) worker(name).Release();
    for (int i = 1; i <= 5; ++i) change(i);
  });
  deinit(handle);
  for (const std::string& name : workers) worker(name).Close();
  ExpectTrue(*handle == nullptr, "the handle is not null");
  changes.join();
  Settle();
  if (--handles_ > 0) return;
  ExpectTrue(Eventually([] { return LibraryThreadCount() == 0; }), "threads are left");
  ExpectEqual(PausingWorkers(), size_t{0}, "the number of workers that pause");
}

Client& Family::ClientOf(const std::string& worker, const std::string& name,
                         const std::set<int>& reported) {
  Worker* const called_by = workers_.at(worker);
  return clients_.try_emplace({called_by, name}, name, *called_by, reported).first->second;
}

void Family::CheckClients() {
  for (auto& [key, client] : clients_) client.Check();
}

void Family::Settle() {
  if (!WaitUntilQuiet()) Fail("threads are still at work after half a minute");
}

void Family::Restart(const std::function<void()>& start) {
  if (deaths_held()) return start();
  fake::HoldDeliveries held(fake::Delivery::kDeathNotification);
  start();
  Settle();
}

std::vector<Words> TakeAll(std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  std::vector<Words> found;
  std::smatch match;
  while (std::regex_search(text, match, regex, std::regex_constants::match_continuous)) {
    found.emplace_back(std::next(match.begin()), match.end());
    text = match.suffix();
  }
  return found;
}

Words Take(std::string& text, const std::string& pattern) {
  const std::string before = text;
  const std::vector<Words> found = TakeAll(text, pattern);
  if (found.size() != 1) Fail("the rest of the dump is\n" + before);
  return found[0];
}

std::unique_ptr<Family> MakeFamily(const std::string& name) {
  return name == "battery" ? MakeBattery() : name == "sensor" ? MakeSensor() : MakeThermal();
}

}  // namespace norvik::qel::random_test
