// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/session.h"

#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "cli/commands.h"
#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

int MillisecondsUntil(Session::Clock::time_point until) {
  using std::chrono::milliseconds;
  // The limit of one poll(): the caller waits again.
  constexpr milliseconds kLongest = std::chrono::hours(1);
  const auto left = std::chrono::ceil<milliseconds>(until - Session::Clock::now());
  return static_cast<int>(std::clamp(left, milliseconds(0), kLongest).count());
}

}  // namespace

StopSignals::StopSignals() {
  sigset_t stops;
  sigemptyset(&stops);
  sigaddset(&stops, SIGINT);
  sigaddset(&stops, SIGTERM);
  fd_ = signalfd(-1, &stops, SFD_CLOEXEC | SFD_NONBLOCK);
  if (fd_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
  pthread_sigmask(SIG_BLOCK, &stops, &before_);
}

StopSignals::~StopSignals() {
  Accept();  // drops a signal that came after the end of the last wait
  close(fd_);
}

void StopSignals::Accept() {
  signalfd_siginfo taken;
  while (read(fd_, &taken, sizeof taken) > 0) {
    // Several signals count as one.
  }
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

Session::Session(const Options& options, Output& output, const Setup& setup)
    : output_(output),
      show_events_(setup.show_events),
      show_notices_(setup.show_notices),
      families_(setup.families),
      listener_(setup.listener),
      signals_(setup.waits ? std::make_unique<StopSignals>() : nullptr),
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
      ShowEvent(*event);
      return Wake::kEvent;
    }
    if (reason == Wake::kInput || Clock::now() >= until) return reason;
  }
}

// Waits for the first of: a reason to stop, an event, the end of the time, input.
Session::Wake Session::Wait(Clock::time_point until, int input) {
  if (stopped()) return Wake::kStop;
  pollfd fds[] = {
      {.fd = signals_ ? signals_->fd() : kNoInput, .events = POLLIN, .revents = 0},
      {.fd = STDOUT_FILENO, .events = 0, .revents = 0},  // reports a closed reader
      {.fd = events_->fd(), .events = POLLIN, .revents = 0},
      {.fd = input, .events = POLLIN, .revents = 0},
  };
  if (poll(fds, std::size(fds), MillisecondsUntil(until)) <= 0) return Wake::kTime;
  if (fds[0].revents != 0) signals_->Accept();
  stopped_ = fds[0].revents != 0 || (fds[1].revents & (POLLERR | POLLHUP)) != 0;
  if (stopped_) return Wake::kStop;
  return fds[3].revents != 0 ? Wake::kInput : Wake::kTime;
}

void Session::ShowPending() {
  while (WaitUntil(Clock::now()) == Wake::kEvent) {
  }
}

int Session::Fail(const std::string& text, int exit_code) {
  ShowPending();
  Complain(text);
  return exit_code;
}

void Session::ShowEvent(const Event& event) {
  if (const auto* const device_event = std::get_if<DeviceEvent>(&event.what)) {
    if (device_event->kind == DeviceEvent::Kind::kReported) return;
    if (!families_.empty() && !families_.contains(FamilyOfService(device_event->service))) return;
    if (!show_events_ && show_notices_ && device_event->kind == DeviceEvent::Kind::kNotice)
      output_.Note(event);
  }
  if (show_events_) output_.Show(event);
}

}  // namespace norvik::qel::monitor
