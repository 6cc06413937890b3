// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "running_service.h"

#include <errno.h>
#include <poll.h>
#include <pthread.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace norvik::qel::linux_machine {

using services::ServiceEvent;

RunningService::RunningService(std::shared_ptr<WatchedClass> watched,
                               const std::shared_ptr<ndk::ICInterface>& service,
                               const char* instance, services::EventSender events)
    : watched_(std::move(watched)),
      events_(std::move(events)),
      process_(events_.service()),
      monitor_(watched_->subsystems()) {
  if (!monitor_.works()) watched_->NoteEndOfEvents(monitor_.error());
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

void RunningService::Watch() {
  while (!watched_->ending()) {
    pollfd fds[] = {{.fd = watched_->wake_fd(), .events = POLLIN, .revents = 0},
                    {.fd = monitor_.fd(), .events = POLLIN, .revents = 0}};  // ignored while -1
    if (poll(fds, std::size(fds), TimeUntilDue()) < 0) continue;             // a signal
    if (fds[1].revents != 0) HearEvents();
    if ((fds[1].revents & (POLLHUP | POLLNVAL)) != 0) {
      monitor_.GiveUp(EPIPE);
      watched_->NoteEndOfEvents(monitor_.error());
    }
    SendNotices();
    ReadWhenDue();
  }
}

void RunningService::HearEvents() {
  // Empties the socket before waiting for reading_lock_, so that a slow reading does not make the
  // socket overflow.
  std::vector<DeviceChange> changes;
  while (std::optional<DeviceChange> change = monitor_.Next()) {
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
