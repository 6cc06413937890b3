#include "random_run.h"

#include <hidl/HidlTransportSupport.h>
#include <stdio.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "quiet.h"
#include "silent_process.h"

namespace norvik::qel::random_test {

RandomRun::RandomRun(std::string origin) : origin_(std::move(origin)) {}

RandomRun::~RandomRun() = default;

void RandomRun::Note(std::string line) {
  std::lock_guard<std::mutex> lock(lock_);
  lines_.push_back(std::move(line));
}

int RandomRun::steps() const {
  std::lock_guard<std::mutex> lock(lock_);
  return steps_;
}

void RandomRun::CountStep() {
  std::lock_guard<std::mutex> lock(lock_);
  ++steps_;
}

void RandomRun::Fail(const std::string& what) const {
  std::lock_guard<std::mutex> lock(lock_);
  fprintf(stderr, "\nsteps (%s):\n", origin_.c_str());
  for (const std::string& line : lines_) fprintf(stderr, "  %s\n", line.c_str());
  fprintf(stderr, "FAILED at step %d: %s\nagain with: %s\n", steps_, what.c_str(), origin_.c_str());
  fflush(stderr);
  abort();
}

void RandomRun::Settle() const {
  if (!WaitUntilQuiet()) Fail("threads are still at work after half a minute");
}

void Calls::Put(int client, int value) {
  std::unique_lock<std::mutex> lock(lock_);
  fake::AssertHeld(lock_);
  if (closed_) run_.Fail("client " + std::to_string(client) + " is called after the end");
  calls_.emplace_back(client, value);
  if (!std::exchange(hold_, false)) return;
  holding_ = true;
  changed_.wait(lock, [this]() QUORVEL_REQUIRES(lock_) { return !holding_; });
}

std::vector<Calls::Call> Calls::Take() {
  std::lock_guard<std::mutex> lock(lock_);
  return std::exchange(calls_, {});
}

void Calls::Hold() {
  std::lock_guard<std::mutex> lock(lock_);
  hold_ = true;
}

void Calls::Release() {
  std::lock_guard<std::mutex> lock(lock_);
  hold_ = false;
  holding_ = false;
  changed_.notify_all();
}

bool Calls::holding() const {
  std::lock_guard<std::mutex> lock(lock_);
  return holding_;
}

void Calls::Close() {
  std::lock_guard<std::mutex> lock(lock_);
  closed_ = true;
}

std::unique_ptr<Family> MakeFamily(const std::string& name, RandomRun& run) {
  if (name == "battery") return MakeBattery(run);
  if (name == "sensor") return MakeSensor(run);
  if (name == "thermal") return MakeThermal(run);
  return nullptr;
}

int RunRandomTest(const std::string& family, Choices choices, const std::string& origin) {
  SetUpSilentProcess();
  RandomRun run(origin);
  const std::unique_ptr<Family> subject = MakeFamily(family, run);
  while (!choices.empty()) {
    run.CountStep();
    subject->Step(choices);
  }
  subject->Finish();
  return run.steps();
}

}  // namespace norvik::qel::random_test
