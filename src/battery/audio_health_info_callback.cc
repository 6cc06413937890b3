#include "battery/audio_health_info_callback.h"

#include "battery/battery_info.h"

namespace norvik::qel::audio {

AudioHealthInfoCallback::~AudioHealthInfoCallback() = default;

void AudioHealthInfoCallback::SetBatteryInfo(BatteryInfo* battery_info) {
  std::lock_guard<std::mutex> lock(lock_);
  battery_info_ = battery_info;
}

ndk::ScopedAStatus AudioHealthInfoCallback::healthInfoChanged(
    const aidl::android::hardware::health::HealthInfo& info) {
  std::lock_guard<std::mutex> lock(lock_);
  if (battery_info_ != nullptr) battery_info_->UpdateHealthInfo(info);
  return ndk::ScopedAStatus::ok();
}

}  // namespace norvik::qel::audio
