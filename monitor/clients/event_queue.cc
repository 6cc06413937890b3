// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/event_queue.h"

#include <errno.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <system_error>
#include <utility>

namespace norvik::qel::monitor {

EventQueue::EventQueue() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE)) {
  if (fd_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

EventQueue::~EventQueue() {
  close(fd_);
}

void EventQueue::Post(std::variant<ValueChange, DeviceEvent> what) {
  std::lock_guard<std::mutex> lock(lock_);
  // The time is taken under the lock, so that times never run backwards in the output.
  events_.push_back({.time = std::chrono::system_clock::now(), .what = std::move(what)});
  static_cast<void>(eventfd_write(fd_, 1));  // fails only at 2^64 events
}

std::optional<Event> EventQueue::Take() {
  std::lock_guard<std::mutex> lock(lock_);
  if (events_.empty()) return std::nullopt;
  eventfd_t one;
  static_cast<void>(eventfd_read(fd_, &one));
  Event event = std::move(events_.front());
  events_.pop_front();
  return event;
}

}  // namespace norvik::qel::monitor
