// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "speaker_guard.h"

#include <quorvel.h>

namespace {

constexpr int kLowLevel = 15;

}  // namespace

SpeakerGuard::SpeakerGuard() {
  InitBatteryInfo(&battery_);
  InitThermalInfo(&thermal_);
  RegisterBatteryLevelCallback(battery_, OnLevel, this);
}

SpeakerGuard::~SpeakerGuard() {
  DeinitBatteryInfo(&battery_);
  DeinitThermalInfo(&thermal_);
}

bool SpeakerGuard::GuardSkin(const char* name) {
  ThermalCallbackParam param = {};
  param.type_name = "SKIN";
  param.temperature_name = name;
  param.callback = OnSeverity;
  return RegisterThermalCallback(thermal_, &param, this) == 0;
}

void SpeakerGuard::WaitUntilSkinIsKnown() {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [&] { return severity_ >= 0; });
}

int SpeakerGuard::volume_percent() const {
  const std::lock_guard lock(lock_);
  return Volume();
}

void SpeakerGuard::WaitForVolume(int percent) {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [&] { return Volume() == percent; });
}

int SpeakerGuard::FreshLevel() {
  return GetBatteryLevel(battery_, false);
}

void SpeakerGuard::OnLevel(int percent, void* cookie) {
  auto& guard = *static_cast<SpeakerGuard*>(cookie);
  const std::lock_guard lock(guard.lock_);
  guard.level_ = percent;
  guard.changed_.notify_all();
}

void SpeakerGuard::OnSeverity(int severity, void* cookie) {
  auto& guard = *static_cast<SpeakerGuard*>(cookie);
  const std::lock_guard lock(guard.lock_);
  guard.severity_ = severity;
  guard.changed_.notify_all();
}

int SpeakerGuard::Volume() const {
  if (severity_ >= QUORVEL_THROTTLING_SEVERE) return 50;
  if (level_ >= 0 && level_ <= kLowLevel) return 75;
  return 100;
}
