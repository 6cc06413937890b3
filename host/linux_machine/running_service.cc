// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "running_service.h"

#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace norvik::qel::linux_machine {

using services::ServiceEvent;

namespace {

// udevd forwards events when its rules have run. Without udevd, as in a container, only the
// kernel's own events are available.
const char* EventSource() {
  return access("/run/udev/control", F_OK) == 0 ? "udev" : "kernel";
}

}  // namespace

RunningService::RunningService(std::shared_ptr<WatchedClass> watched,
                               const std::shared_ptr<ndk::ICInterface>& service,
                               const char* instance, services::EventSender events)
    : watched_(std::move(watched)), events_(std::move(events)), process_(events_.service()) {
  if (const int error = OpenMonitor(); error != 0) EndEvents(error);
  watched_->Refresh();
  SendNotices();
  process_.AddService(service, instance);
  events_.Send(ServiceEvent::Kind::kStarted);
  thread_ = std::thread([this] {
    pthread_setname_np(pthread_self(), watched_->subsystems().front());
    Watch();
  });
}

RunningService::~RunningService() {
  watched_->End();
  thread_.join();
}

int RunningService::OpenMonitor() {
  udev_.reset(udev_new());
  if (udev_ == nullptr) return errno;
  monitor_.reset(udev_monitor_new_from_netlink(udev_.get(), EventSource()));
  if (monitor_ == nullptr) return errno;
  int result = 0;
  for (const char* const subsystem : watched_->subsystems()) {
    if (result < 0) break;
    result = udev_monitor_filter_add_match_subsystem_devtype(monitor_.get(), subsystem,
                                                             /*devtype=*/nullptr);
  }
  if (result >= 0) result = udev_monitor_enable_receiving(monitor_.get());
  return result < 0 ? -result : 0;
}

std::optional<DeviceChange> RunningService::NextChange() {
  using Kind = DeviceChange::Kind;
  const UdevDevice device(udev_monitor_receive_device(monitor_.get()));
  if (device == nullptr) {
    return errno == ENOBUFS ? std::optional(DeviceChange{.kind = Kind::kLost}) : std::nullopt;
  }
  const char* const action = udev_device_get_action(device.get());
  const bool removed = action != nullptr && std::string_view(action) == "remove";
  return DeviceChange{.kind = removed ? Kind::kRemoved : Kind::kThere,
                      .syspath = udev_device_get_syspath(device.get())};
}

void RunningService::EndEvents(int error) {
  monitor_.reset();
  watched_->NoteEndOfEvents(error);
}

void RunningService::Watch() {
  while (!watched_->ending()) {
    const int events_fd = monitor_ != nullptr ? udev_monitor_get_fd(monitor_.get()) : -1;
    pollfd fds[] = {{.fd = watched_->wake_fd(), .events = POLLIN, .revents = 0},
                    {.fd = events_fd, .events = POLLIN, .revents = 0}};  // ignored while -1
    if (poll(fds, std::size(fds), TimeUntilDue()) < 0) continue;         // a signal
    if (fds[1].revents != 0) HearEvents();
    if ((fds[1].revents & (POLLHUP | POLLNVAL)) != 0) EndEvents(EPIPE);
    SendNotices();
    ReadWhenDue();
  }
}

void RunningService::HearEvents() {
  // Empties the socket before waiting for reading_lock_, so that a slow reading does not make the
  // socket overflow.
  std::vector<DeviceChange> changes;
  while (std::optional<DeviceChange> change = NextChange()) {
    changes.push_back(std::move(*change));
  }
  watched_->Note(changes);
  // One reading for all events. Also if there was none: the message may have been invalid.
  watched_->Refresh();
}

void RunningService::ReadWhenDue() {
  if (!watched_->has_listeners()) {
    due_ = std::nullopt;
    return;
  }
  const auto now = Clock::now();
  // A new listener has already received the current values.
  if (due_ && now >= *due_) watched_->ReadForListeners();
  if (!due_ || now >= *due_) due_ = now + watched_->period();
}

int RunningService::TimeUntilDue() const {
  if (!due_) return -1;
  const auto time = std::chrono::ceil<std::chrono::milliseconds>(*due_ - Clock::now());
  return static_cast<int>(std::max<decltype(time)>(time, {}).count());
}

void RunningService::SendNotices() {
  for (std::string& notice : watched_->TakeNotices()) {
    events_.Send(ServiceEvent::Kind::kNotice, std::move(notice));
  }
}

}  // namespace norvik::qel::linux_machine
