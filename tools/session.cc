#include "tools/session.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace norvik::qel::tool {

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
      family_(options.family),
      device_(options.device->make(
          [queue = events_](DeviceEvent event) { queue->Post(std::move(event)); })) {
  device_->Start({.verbose = options.verbose, .services_late = setup.services_late});
}

Session::Wake Session::WaitUntil(Clock::time_point until) {
  while (!Stopped(until)) {
    if (const std::optional<Event> event = events_->Take()) {
      observed_.Note(*event);
      if (IsShown(*event)) output_.Show(*event);
      return Wake::kEvent;
    }
    if (Clock::now() >= until) return Wake::kTime;
  }
  return Wake::kStop;
}

// Waits for whatever comes first: a reason to stop, an event, the end of the time.
bool Session::Stopped(Clock::time_point until) {
  if (stopped_ || !output_.lines().open()) return true;
  pollfd fds[] = {
      {.fd = signals_.fd(), .events = POLLIN, .revents = 0},
      {.fd = STDOUT_FILENO, .events = 0, .revents = 0},  // tells when its reader has left
      {.fd = events_->fd(), .events = POLLIN, .revents = 0},
  };
  if (poll(fds, std::size(fds), MillisecondsUntil(until)) <= 0) return false;
  if (fds[0].revents != 0) signals_.Accept();
  stopped_ = fds[0].revents != 0 || (fds[1].revents & (POLLERR | POLLHUP)) != 0;
  return stopped_;
}

bool Session::IsShown(const Event& event) const {
  const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
  // A service may say which of several kinds it is behind its name.
  const bool is_foreign = device_event != nullptr && family_ != nullptr &&
                          !device_event->service.starts_with(family_->service);
  return show_events_ && !is_foreign;
}

}  // namespace norvik::qel::tool
