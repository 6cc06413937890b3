// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal/audio_thermal_changed_callback.h"

#include "thermal/audio_thermal_callback.h"

namespace norvik::qel::audio {

AudioThermalChangedCallback::AudioThermalChangedCallback() = default;

AudioThermalChangedCallback::~AudioThermalChangedCallback() = default;

void AudioThermalChangedCallback::SetAudioThermalCallback(
    AudioThermalCallback* audio_thermal_callback) {
  audio_thermal_callback_.Set(audio_thermal_callback);
}

::android::hardware::Return<void> AudioThermalChangedCallback::notifyThrottling(
    const ::android::hardware::thermal::V2_0::Temperature& temperature) {
  audio_thermal_callback_.Visit(
      [&](AudioThermalCallback& callback) { callback.UpdateTemperature(temperature); });
  return ::android::hardware::Void();
}

}  // namespace norvik::qel::audio
