#include "thermal/thermal_death_recipient.h"

#include "thermal/thermal_info.h"

namespace norvik::qel::audio {

ThermalDeathRecipient::ThermalDeathRecipient(ThermalInfo* owner) : thermal_info_(owner) {}

ThermalDeathRecipient::~ThermalDeathRecipient() = default;

void ThermalDeathRecipient::Detach() {
  std::lock_guard<std::mutex> lock(lock_);
  thermal_info_ = nullptr;
}

void ThermalDeathRecipient::serviceDied(
    uint64_t /*cookie*/, const ::android::wp<::android::hidl::base::V1_0::IBase>& /*who*/) {
  std::lock_guard<std::mutex> lock(lock_);
  if (thermal_info_ != nullptr) thermal_info_->ThermalServiceDied();
}

}  // namespace norvik::qel::audio
