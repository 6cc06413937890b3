// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/session.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace norvik::qel::monitor {

namespace {

int MillisecondsUntil(Session::Clock::time_point until) {
  using std::chrono::milliseconds;
  // A later wait goes on where a long one ends.
  constexpr milliseconds kLongest = std::chrono::hours(1);
  const auto left = std::chrono::ceil<milliseconds>(until - Session::Clock::now());
  return static_cast<int>(std::clamp(left, milliseconds(0), kLongest).count());
}

}  // namespace

std::string SilenceOf(std::string_view service) {
  return "the " + std::string(service) + " service has not reported anything within " +
         std::to_string(kReportLimit.count()) + " s";
}

Session::Session(const Options& options, Output& output, const Setup& setup)
    : output_(output),
      show_events_(setup.show_events),
      service_(options.command->service),
      listener_(setup.listener),
      device_((setup.make_device ? setup.make_device : options.device->make)(
          [queue = events_](DeviceEvent event) { queue->Post(std::move(event)); })) {
  device_->Start({.verbose = options.verbose});
}

Session::Wake Session::WaitUntil(Clock::time_point until, int input) {
  while (true) {
    const Wake reason = Wait(until, input);
    if (reason == Wake::kStop) return reason;
    if (const std::optional<Event> event = events_->Take()) {
      observed_.Note(*event);
      if (listener_ && !listener_(*event)) stopped_ = true;
      if (IsShown(*event)) output_.Show(*event);
      return Wake::kEvent;
    }
    if (reason == Wake::kInput || Clock::now() >= until) return reason;
  }
}

// Waits for whatever comes first: a reason to stop, an event, the end of the time, input.
Session::Wake Session::Wait(Clock::time_point until, int input) {
  if (stopped_ || !output_.lines().open()) return Wake::kStop;
  pollfd fds[] = {
      {.fd = signals_.fd(), .events = POLLIN, .revents = 0},
      {.fd = STDOUT_FILENO, .events = 0, .revents = 0},  // tells when its reader has left
      {.fd = events_->fd(), .events = POLLIN, .revents = 0},
      {.fd = input, .events = POLLIN, .revents = 0},
  };
  if (poll(fds, std::size(fds), MillisecondsUntil(until)) <= 0) return Wake::kTime;
  if (fds[0].revents != 0) signals_.Accept();
  stopped_ = fds[0].revents != 0 || (fds[1].revents & (POLLERR | POLLHUP)) != 0;
  if (stopped_) return Wake::kStop;
  return fds[3].revents != 0 ? Wake::kInput : Wake::kTime;
}

bool Session::IsShown(const Event& event) const {
  const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
  if (device_event != nullptr && device_event->kind == DeviceEvent::Kind::kReported) return false;
  // A service may say which of several kinds it is behind its name.
  const bool is_foreign = device_event != nullptr && !device_event->service.starts_with(service_);
  return show_events_ && !is_foreign;
}

}  // namespace norvik::qel::monitor
