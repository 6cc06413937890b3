// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the remote side of IThermalChangedCallback.
#pragma once

#include <aidl/android/hardware/thermal/IThermalChangedCallback.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::android::hardware::thermal {

class BpThermalChangedCallback : public ndk::BpCInterface<IThermalChangedCallback> {
 public:
  explicit BpThermalChangedCallback(const ndk::SpAIBinder& binder);
  ~BpThermalChangedCallback() override;
  ndk::ScopedAStatus notifyThrottling(const Temperature& temperature) override;
  ndk::ScopedAStatus getInterfaceVersion(int32_t* out) override;
  ndk::ScopedAStatus getInterfaceHash(std::string* out) override;

 private:
  struct Asked;
  const std::unique_ptr<Asked> asked_;
};

}  // namespace aidl::android::hardware::thermal
