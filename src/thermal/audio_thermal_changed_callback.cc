#include "thermal/audio_thermal_changed_callback.h"

#include "thermal/audio_thermal_callback.h"

namespace norvik::qel::audio {

AudioThermalChangedCallback::AudioThermalChangedCallback() = default;

AudioThermalChangedCallback::~AudioThermalChangedCallback() = default;

void AudioThermalChangedCallback::SetAudioThermalCallback(
    AudioThermalCallback* audio_thermal_callback) {
  std::lock_guard<std::mutex> lock(lock_);
  audio_thermal_callback_ = audio_thermal_callback;
}

::android::hardware::Return<void> AudioThermalChangedCallback::notifyThrottling(
    const ::android::hardware::thermal::V2_0::Temperature& temperature) {
  std::lock_guard<std::mutex> lock(lock_);
  if (audio_thermal_callback_ != nullptr) audio_thermal_callback_->UpdateTemperature(temperature);
  return ::android::hardware::Void();
}

}  // namespace norvik::qel::audio
