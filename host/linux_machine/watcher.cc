// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "watcher.h"

#include <errno.h>
#include <poll.h>
#include <pthread.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace norvik::qel::linux_machine {

Watcher::Watcher(std::shared_ptr<WatchedClass> watched, Tell tell)
    : watched_(std::move(watched)), tell_(std::move(tell)), monitor_(watched_->subsystems()) {
  if (!monitor_.works()) watched_->NoteEndOfEvents(monitor_.error());
  watched_->Refresh();
  TellNotices();
}

Watcher::~Watcher() {
  watched_->End();
  if (thread_.joinable()) thread_.join();
}

void Watcher::Run(const char* thread_name) {
  thread_ = std::thread([this, thread_name] {
    pthread_setname_np(pthread_self(), thread_name);
    Watch();
  });
}

void Watcher::Watch() {
  while (!watched_->ending()) {
    pollfd fds[] = {{.fd = watched_->wake_fd(), .events = POLLIN, .revents = 0},
                    {.fd = monitor_.fd(), .events = POLLIN, .revents = 0}};  // ignored while -1
    if (poll(fds, std::size(fds), TimeUntilDue()) < 0) continue;             // a signal
    if (fds[1].revents != 0) HearEvents();
    if ((fds[1].revents & (POLLHUP | POLLNVAL)) != 0) {
      monitor_.GiveUp(EPIPE);
      watched_->NoteEndOfEvents(monitor_.error());
    }
    TellNotices();
    ReadWhenDue();
  }
}

void Watcher::HearEvents() {
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

void Watcher::ReadWhenDue() {
  const auto period = watched_->period();
  if (!period) {
    due_ = std::nullopt;
    return;
  }
  const auto now = Clock::now();
  // A new listener has already received the current values.
  if (due_ && now >= *due_) watched_->ReadForListeners();
  if (!due_ || now >= *due_) due_ = now + *period;
}

int Watcher::TimeUntilDue() const {
  if (!due_) return -1;
  const auto time = std::chrono::ceil<std::chrono::milliseconds>(*due_ - Clock::now());
  return static_cast<int>(std::max<decltype(time)>(time, {}).count());
}

void Watcher::TellNotices() {
  for (std::string& notice : watched_->TakeNotices()) tell_(std::move(notice));
}

}  // namespace norvik::qel::linux_machine
