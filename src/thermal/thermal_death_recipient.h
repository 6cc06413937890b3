#pragma once

#include <hidl/HidlSupport.h>

#include <cstdint>
#include <mutex>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

class ThermalInfo;

// Tells a ThermalInfo of the death of its HIDL service.
//
// Threads: notices come on the process's HIDL threads.
// Locks: lock_ comes before ThermalInfo's. It is held during a notice, so that Detach() waits for
// one that is under way: after that none touches the owner.
class ThermalDeathRecipient : public ::android::hardware::hidl_death_recipient {
 public:
  // The owner is there from the start: whoever makes this holds the owner's lock and could not take
  // lock_ without turning the order round. Null for one that tells nobody. Not owned.
  explicit ThermalDeathRecipient(ThermalInfo* owner);
  ~ThermalDeathRecipient() override;
  ThermalDeathRecipient(const ThermalDeathRecipient&) = delete;
  ThermalDeathRecipient& operator=(const ThermalDeathRecipient&) = delete;

  void Detach() QEL_EXCLUDES(lock_);

  void serviceDied(uint64_t cookie,
                   const ::android::wp<::android::hidl::base::V1_0::IBase>& who) override
      QEL_EXCLUDES(lock_);

 private:
  std::mutex lock_;
  ThermalInfo* thermal_info_ QEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::audio
