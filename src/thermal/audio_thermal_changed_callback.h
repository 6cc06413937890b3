#pragma once

#include <android/hardware/thermal/2.0/IThermalChangedCallback.h>
#include <hidl/Status.h>

#include <mutex>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

class AudioThermalCallback;

// What the thermal service calls when a severity changes. It outlives the object that it tells, as
// long as the service holds it.
//
// Threads: notifications come on the process's binder threads.
// Locks: lock_ comes before AudioThermalCallback's. It is held while that object is told, so that
// SetAudioThermalCallback(nullptr) waits for a notification that is under way.
class AudioThermalChangedCallback
    : public ::android::hardware::thermal::V2_0::IThermalChangedCallback {
 public:
  AudioThermalChangedCallback();
  ~AudioThermalChangedCallback() override;
  AudioThermalChangedCallback(const AudioThermalChangedCallback&) = delete;
  AudioThermalChangedCallback& operator=(const AudioThermalChangedCallback&) = delete;

  // Whom to tell from now on; nobody when null. Not owned.
  void SetAudioThermalCallback(AudioThermalCallback* audio_thermal_callback) QEL_EXCLUDES(lock_);

  ::android::hardware::Return<void> notifyThrottling(
      const ::android::hardware::thermal::V2_0::Temperature& temperature) override
      QEL_EXCLUDES(lock_);

 private:
  std::mutex lock_;
  AudioThermalCallback* audio_thermal_callback_ QEL_GUARDED_BY(lock_) = nullptr;
};

}  // namespace norvik::qel::audio
