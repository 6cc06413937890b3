// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal/thermal_death_recipient.h"

#include "thermal/thermal_info.h"

namespace norvik::qel::audio {

ThermalDeathRecipient::ThermalDeathRecipient(ThermalInfo* owner) : thermal_info_(owner) {}

ThermalDeathRecipient::~ThermalDeathRecipient() = default;

void ThermalDeathRecipient::Detach() {
  thermal_info_.Set(nullptr);
}

void ThermalDeathRecipient::serviceDied(
    uint64_t /*cookie*/, const ::android::wp<::android::hidl::base::V1_0::IBase>& /*who*/) {
  thermal_info_.Visit([](ThermalInfo& thermal_info) { thermal_info.ThermalServiceDied(); });
}

}  // namespace norvik::qel::audio
