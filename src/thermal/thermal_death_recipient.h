// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <hidl/HidlSupport.h>

#include <cstdint>

#include "common/back_pointer.h"

namespace norvik::qel::audio {

class ThermalInfo;

// Notifies a ThermalInfo of the death of its HIDL service.
//
// Threads: death notifications arrive on the process's HIDL threads.
// Locks: the back pointer's, then the ThermalInfo's.
class ThermalDeathRecipient : public ::android::hardware::hidl_death_recipient {
 public:
  // Attached from the start: the caller holds the owner's lock and could not take the back
  // pointer's without reversing the order. Null for a recipient that notifies no object.
  explicit ThermalDeathRecipient(ThermalInfo* owner);
  ~ThermalDeathRecipient() override;
  ThermalDeathRecipient(const ThermalDeathRecipient&) = delete;
  ThermalDeathRecipient& operator=(const ThermalDeathRecipient&) = delete;

  // Waits for a notification under way; later ones do nothing.
  void Detach();

  void serviceDied(uint64_t cookie,
                   const ::android::wp<::android::hidl::base::V1_0::IBase>& who) override;

 private:
  BackPointer<ThermalInfo> thermal_info_;
};

}  // namespace norvik::qel::audio
