// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "watched_class.h"

#include <errno.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <system_error>

namespace norvik::qel::linux_machine {

WatchedClass::WatchedClass(std::vector<const char*> subsystems, std::string devices,
                           std::chrono::milliseconds period)
    : subsystems_(std::move(subsystems)),
      devices_(std::move(devices)),
      period_(period),
      wake_fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (wake_fd_ < 0) throw std::system_error(errno, std::system_category(), "eventfd");
}

WatchedClass::~WatchedClass() {
  close(wake_fd_);
}

services::ServiceObserver WatchedClass::WakingObserver(services::ServiceObserver observer) const {
  return [this, observer = std::move(observer)](const services::ServiceEvent& event) {
    using Kind = services::ServiceEvent::Kind;
    if (event.kind == Kind::kRegistered || event.kind == Kind::kUnregistered) Wake();
    if (observer != nullptr) observer(event);
  };
}

void WatchedClass::Refresh() {
  std::lock_guard<std::mutex> lock(reading_lock_);
  std::vector<std::string> listed;
  if (const int error = ListDevices(subsystems_, &listed); error != 0) {
    // This does not mean that there are no devices: the last report stays valid.
    NoticeFaultsLocked(
        {{.device = devices_, .file = "", .what = "cannot be listed: " + ErrorText(error)}});
    return;
  }
  if (all_are_announced_) announced_ = {listed.begin(), listed.end()};
  all_are_announced_ = !has_events_;
  std::erase_if(listed, [this](const std::string& syspath) QUORVEL_REQUIRES(reading_lock_) {
    return !announced_.contains(syspath);
  });
  ForgetFaultsOfOthersLocked(listed);
  ReadLocked(listed);
}

void WatchedClass::Note(const std::vector<DeviceChange>& changes) {
  std::lock_guard<std::mutex> lock(reading_lock_);
  for (const DeviceChange& change : changes) {
    switch (change.kind) {
      case DeviceChange::Kind::kThere:
        announced_.insert(change.syspath);
        break;
      case DeviceChange::Kind::kRemoved:
        announced_.erase(change.syspath);
        break;
      case DeviceChange::Kind::kLost:
        all_are_announced_ = true;
        break;
    }
  }
}

void WatchedClass::NoteEndOfEvents(int error) {
  std::lock_guard<std::mutex> lock(reading_lock_);
  has_events_ = false;
  all_are_announced_ = true;
  AddNoticeLocked("device events are not available: " + ErrorText(error));
}

std::vector<std::string> WatchedClass::TakeNotices() {
  std::lock_guard<std::mutex> lock(reading_lock_);
  uint64_t wakes = 0;
  // Fails if the counter is 0.
  [[maybe_unused]] const ssize_t result = read(wake_fd_, &wakes, sizeof(wakes));
  return std::exchange(notices_, {});
}

void WatchedClass::End() {
  ending_ = true;
  Wake();
}

void WatchedClass::NoticeFaultsLocked(const std::vector<Fault>& faults) {
  for (const Fault& fault : faults) {
    if (faults_told_.emplace(fault.device, fault.file).second) AddNoticeLocked(NoticeOf(fault));
  }
}

void WatchedClass::AddNoticeLocked(std::string notice) {
  notices_.push_back(std::move(notice));
  Wake();
}

void WatchedClass::NoticeLackLocked(bool has_values, const char* notice) {
  if (std::exchange(had_values_, has_values) && !has_values) AddNoticeLocked(notice);
}

void WatchedClass::Wake() const {
  const uint64_t one = 1;
  // Fails if the counter is full; the descriptor is then readable already.
  [[maybe_unused]] const ssize_t result = write(wake_fd_, &one, sizeof(one));
}

void WatchedClass::ForgetFaultsOfOthersLocked(const std::vector<std::string>& syspaths) {
  std::set<std::string> there;
  for (const std::string& syspath : syspaths) there.insert(DeviceName(syspath));
  std::erase_if(faults_told_, [&](const auto& fault) { return !there.contains(fault.first); });
}

}  // namespace norvik::qel::linux_machine
