// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal/leaving_callbacks.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "common/repeated_thread.h"

namespace norvik::qel::audio {

void LeavingCallbacks::Add(std::unique_ptr<AudioThermalCallback> callback) {
  if (RepeatedThread::IsWorker()) {
    callback->RequestExit();
    retired_.push_back(std::move(callback));
  } else {
    joinable_.push_back(std::move(callback));
  }
}

LeavingCallbacks::Callbacks LeavingCallbacks::Take() {
  Callbacks taken = std::exchange(joinable_, {});
  const auto ended = std::stable_partition(
      retired_.begin(), retired_.end(), [](const auto& callback) { return !callback->HasEnded(); });
  std::move(ended, retired_.end(), std::back_inserter(taken));
  retired_.erase(ended, retired_.end());
  return taken;
}

LeavingCallbacks::Callbacks LeavingCallbacks::TakeAll() {
  Callbacks taken = std::exchange(joinable_, {});
  std::move(retired_.begin(), retired_.end(), std::back_inserter(taken));
  retired_.clear();
  return taken;
}

void LeavingCallbacks::Join(const Callbacks& callbacks) {
  for (const auto& callback : callbacks) callback->StopCallbackThread();
}

}  // namespace norvik::qel::audio
