#include "fuzz/history.h"

#include <android/binder_process.h>
#include <android/log.h>
#include <hidl/HidlTransportSupport.h>
#include <stdio.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "fuzz/quiet.h"
#include "standin/service_manager.h"

namespace norvik::qel::fuzz {

History::History(std::string origin) : origin_(std::move(origin)) {}

History::~History() = default;

void History::Note(std::string line) {
  std::lock_guard<std::mutex> lock(lock_);
  lines_.push_back(std::move(line));
}

int History::steps() const {
  std::lock_guard<std::mutex> lock(lock_);
  return steps_;
}

void History::CountStep() {
  std::lock_guard<std::mutex> lock(lock_);
  ++steps_;
}

void History::Fail(const std::string& what) const {
  std::lock_guard<std::mutex> lock(lock_);
  fprintf(stderr, "\nhistory (%s):\n", origin_.c_str());
  for (const std::string& line : lines_) fprintf(stderr, "  %s\n", line.c_str());
  fprintf(stderr, "FAILED at step %d: %s\nagain with: %s\n", steps_, what.c_str(), origin_.c_str());
  fflush(stderr);
  abort();
}

void History::Settle() const {
  if (!WaitUntilQuiet()) Fail("threads are still at work after half a minute");
}

void Calls::Put(int client, int value) {
  std::unique_lock<std::mutex> lock(lock_);
  if (closed_) history_.Fail("client " + std::to_string(client) + " is called after the end");
  calls_.emplace_back(client, value);
  if (!std::exchange(hold_, false)) return;
  holding_ = true;
  changed_.wait(lock, [this] { return !holding_; });
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

std::string TextOf(void (*dump)(void* handle, int fd), void* handle) {
  static const int file = memfd_create("dump", MFD_CLOEXEC);
  static_cast<void>(ftruncate(file, 0) + lseek(file, 0, SEEK_SET));
  dump(handle, file);
  std::string text(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
  if (pread(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) abort();
  return text;
}

std::unique_ptr<Family> MakeFamily(const std::string& name, History& history) {
  if (name == "battery") return MakeBattery(history);
  if (name == "sensor") return MakeSensor(history);
  if (name == "thermal") return MakeThermal(history);
  return nullptr;
}

void SetUpProcess() {
  static const bool done = [] {
    // Silence: what is logged is not compared.
    __android_log_set_logger([](const __android_log_message*) {});
    ABinderProcess_startThreadPool();
    standin::SetGetServiceWait(std::chrono::milliseconds(0), 1);
    return true;
  }();
  static_cast<void>(done);
}

int RunHistory(const std::string& family, Choices choices, const std::string& origin) {
  SetUpProcess();
  History history(origin);
  const std::unique_ptr<Family> subject = MakeFamily(family, history);
  while (!choices.empty()) {
    history.CountStep();
    subject->Step(choices);
  }
  subject->Finish();
  return history.steps();
}

}  // namespace norvik::qel::fuzz
