#pragma once

#include <aidl/android/hardware/health/BnHealthInfoCallback.h>

#include <mutex>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

class BatteryInfo;

// What a BatteryInfo registers with the health service. The service keeps it for as long as it
// likes, so it may outlive the BatteryInfo: from then on it does nothing.
//
// Threads: the service reports on binder threads, perhaps before the registration has returned.
// Locks: lock_, then the BatteryInfo's.
class AudioHealthInfoCallback : public aidl::android::hardware::health::BnHealthInfoCallback {
 public:
  ~AudioHealthInfoCallback() override;

  // Where reports go; null for nowhere. Waits for a report that is being handled.
  void SetBatteryInfo(BatteryInfo* battery_info) QEL_EXCLUDES(lock_);

  ndk::ScopedAStatus healthInfoChanged(
      const aidl::android::hardware::health::HealthInfo& info) override QEL_EXCLUDES(lock_);

 private:
  std::mutex lock_;
  BatteryInfo* battery_info_ QEL_GUARDED_BY(lock_) = nullptr;  // not owned
};

}  // namespace norvik::qel::audio
