// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <android/hardware/thermal/2.0/IThermalChangedCallback.h>
#include <hidl/Status.h>

#include "common/back_pointer.h"

namespace norvik::qel::audio {

class AudioThermalCallback;

// The callback that an AudioThermalCallback registers with the thermal service. The service may
// keep it longer than the AudioThermalCallback lives; from then on it does nothing.
//
// Threads: reports arrive on the process's binder threads.
// Locks: the back pointer's, then the AudioThermalCallback's.
class AudioThermalChangedCallback
    : public ::android::hardware::thermal::V2_0::IThermalChangedCallback {
 public:
  AudioThermalChangedCallback();
  ~AudioThermalChangedCallback() override;
  AudioThermalChangedCallback(const AudioThermalChangedCallback&) = delete;
  AudioThermalChangedCallback& operator=(const AudioThermalChangedCallback&) = delete;

  // The receiver of reports; null for none. Waits for a report that is being handled.
  void SetAudioThermalCallback(AudioThermalCallback* audio_thermal_callback);

  ::android::hardware::Return<void> notifyThrottling(
      const ::android::hardware::thermal::V2_0::Temperature& temperature) override;

 private:
  BackPointer<AudioThermalCallback> audio_thermal_callback_;
};

}  // namespace norvik::qel::audio
