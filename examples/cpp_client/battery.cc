// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "battery.h"

#include <quorvel.h>

#include <stdexcept>

Battery::Battery() {
  InitBatteryInfo(&handle_);
  if (RegisterBatteryLevelCallback(handle_, OnLevel, this) != 0) {
    DeinitBatteryInfo(&handle_);
    throw std::runtime_error("no battery");
  }
}

// No callback runs after DeinitBatteryInfo() returns, so the cookie may be freed.
Battery::~Battery() {
  DeinitBatteryInfo(&handle_);
}

int Battery::NextLevel() {
  std::unique_lock lock(lock_);
  arrived_.wait(lock, [this] { return !levels_.empty(); });
  const int level = levels_.front();
  levels_.pop_front();
  return level;
}

void Battery::OnLevel(int percent, void* cookie) {
  auto& battery = *static_cast<Battery*>(cookie);
  const std::lock_guard lock(battery.lock_);
  battery.levels_.push_back(percent);
  battery.arrived_.notify_one();
}
