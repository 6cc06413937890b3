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

// No call is made once this has returned, so that the cookie may go.
Battery::~Battery() {
  DeinitBatteryInfo(&handle_);
}

int Battery::NextLevel() {
  std::unique_lock lock(lock_);
  came_.wait(lock, [this] { return !levels_.empty(); });
  const int level = levels_.front();
  levels_.pop_front();
  return level;
}

void Battery::OnLevel(int percent, void* cookie) {
  auto& battery = *static_cast<Battery*>(cookie);
  const std::lock_guard lock(battery.lock_);
  battery.levels_.push_back(percent);
  battery.came_.notify_one();
}
