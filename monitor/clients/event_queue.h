// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Brings events from all threads to the one that shows them.
#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <variant>

#include "clients/event.h"

namespace norvik::qel::monitor {

// Shared by its posters: threads of a device may outlive the command that started them.
//
// Threads: any.
class EventQueue {
 public:
  EventQueue();
  ~EventQueue();
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;

  // Stamps the event with the present time. Never blocks for long: callbacks of the library post.
  void Post(std::variant<ValueChange, DeviceEvent> what);
  // The oldest, if there is one.
  [[nodiscard]] std::optional<Event> Take();
  // Readable while an event waits.
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
