// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Passes events from any thread to the main thread.
#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <variant>

#include "clients/event.h"

namespace norvik::qel::monitor {

// Shared with the threads that post: a device's threads may outlive the command that started them.
//
// Threads: any.
class EventQueue {
 public:
  EventQueue();
  ~EventQueue();
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;

  // Stamps the event with the current time. Never blocks for long: the library's callbacks call it.
  void Post(std::variant<ValueChange, DeviceEvent> what);
  // Removes the oldest event and returns it; nullopt if there is none.
  [[nodiscard]] std::optional<Event> Take();
  // Readable while the queue is not empty.
  int fd() const { return fd_; }

 private:
  const int fd_;
  std::mutex lock_;
#if defined(__clang__) && defined(_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
  __attribute__((guarded_by(lock_)))  // checked by the clang build with libc++
#endif
  std::deque<Event>
      events_;
};

}  // namespace norvik::qel::monitor
