// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the local side of IHealth.
#pragma once

#include <aidl/android/hardware/health/IHealth.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

class BnHealth : public ndk::BnCInterface<IHealth> {
 public:
  BnHealth();
  ~BnHealth() override;
  ndk::ScopedAStatus getInterfaceVersion(int32_t* out) final;
  ndk::ScopedAStatus getInterfaceHash(std::string* out) final;

 protected:
  ndk::SpAIBinder createBinder() override;
};

}  // namespace aidl::android::hardware::health
