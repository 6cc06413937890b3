// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the remote side of IHealthInfoCallback.
#pragma once

#include <aidl/android/hardware/health/IHealthInfoCallback.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::android::hardware::health {

class BpHealthInfoCallback : public ndk::BpCInterface<IHealthInfoCallback> {
 public:
  explicit BpHealthInfoCallback(const ndk::SpAIBinder& binder);
  ~BpHealthInfoCallback() override;
  ndk::ScopedAStatus healthInfoChanged(const HealthInfo& info) override;
  ndk::ScopedAStatus getInterfaceVersion(int32_t* out) override;
  ndk::ScopedAStatus getInterfaceHash(std::string* out) override;

 private:
  struct Asked;
  const std::unique_ptr<Asked> asked_;
};

}  // namespace aidl::android::hardware::health
