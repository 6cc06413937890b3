// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the remote side of
// ICoolingDeviceChangedCallback.
#pragma once

#include <aidl/android/hardware/thermal/ICoolingDeviceChangedCallback.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::android::hardware::thermal {

class BpCoolingDeviceChangedCallback : public ndk::BpCInterface<ICoolingDeviceChangedCallback> {
 public:
  explicit BpCoolingDeviceChangedCallback(const ndk::SpAIBinder& binder);
  ~BpCoolingDeviceChangedCallback() override;
  ndk::ScopedAStatus notifyCoolingDeviceChanged(const CoolingDevice& coolingDevice) override;
  ndk::ScopedAStatus getInterfaceVersion(int32_t* out) override;
  ndk::ScopedAStatus getInterfaceHash(std::string* out) override;

 private:
  struct Asked;
  const std::unique_ptr<Asked> asked_;
};

}  // namespace aidl::android::hardware::thermal
