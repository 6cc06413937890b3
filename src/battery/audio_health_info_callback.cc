// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "battery/audio_health_info_callback.h"

#include "battery/battery_info.h"

namespace norvik::qel::audio {

AudioHealthInfoCallback::~AudioHealthInfoCallback() = default;

void AudioHealthInfoCallback::SetBatteryInfo(BatteryInfo* battery_info) {
  battery_info_.Set(battery_info);
}

ndk::ScopedAStatus AudioHealthInfoCallback::healthInfoChanged(
    const aidl::android::hardware::health::HealthInfo& info) {
  battery_info_.Visit([&](BatteryInfo& battery_info) { battery_info.UpdateHealthInfo(info); });
  return ndk::ScopedAStatus::ok();
}

}  // namespace norvik::qel::audio
