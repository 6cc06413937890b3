// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: what every HIDL interface can do.
//
// A result callback runs on the caller's thread before the call returns, at most once. It does not
// run if the transport fails. Its arguments are valid only while it runs.
#pragma once

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/RefBase.h>

#include <cstdint>
#include <functional>

namespace android::hidl::base::V1_0 {

struct DebugInfo final {
  enum class Architecture : int32_t { UNKNOWN = 0, IS_64BIT = 1, IS_32BIT = 2 };
  int32_t pid;
  uint64_t ptr;
  Architecture arch;
};

struct IBase : virtual public RefBase {
  static const char* descriptor;

  using interfaceChain_cb =
      std::function<void(const hardware::hidl_vec<hardware::hidl_string>& descriptors)>;
  using interfaceDescriptor_cb = std::function<void(const hardware::hidl_string& descriptor)>;
  using getHashChain_cb =
      std::function<void(const hardware::hidl_vec<hardware::hidl_array<uint8_t, 32>>& hashchain)>;
  using getDebugInfo_cb = std::function<void(const DebugInfo& info)>;

  virtual bool isRemote() const;

  // The descriptors, from the most derived interface to this one.
  virtual hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb);
  virtual hardware::Return<void> debug(const hardware::hidl_handle& fd,
                                       const hardware::hidl_vec<hardware::hidl_string>& options);
  virtual hardware::Return<void> interfaceDescriptor(interfaceDescriptor_cb _hidl_cb);
  virtual hardware::Return<void> getHashChain(getHashChain_cb _hidl_cb);
  virtual hardware::Return<void> setHALInstrumentation();
  // On a local object: true (false for a null recipient); the recipient is never called. On a
  // proxy: false if the service is known to be dead; the link ends with this proxy object. The
  // state of the Return is always ok.
  virtual hardware::Return<bool> linkToDeath(const sp<hardware::hidl_death_recipient>& recipient,
                                             uint64_t cookie);
  virtual hardware::Return<void> ping();
  virtual hardware::Return<void> getDebugInfo(getDebugInfo_cb _hidl_cb);
  virtual hardware::Return<void> notifySyspropsChanged();
  virtual hardware::Return<bool> unlinkToDeath(const sp<hardware::hidl_death_recipient>& recipient);

  static hardware::Return<sp<IBase>> castFrom(const sp<IBase>& parent, bool emitError = false);
};

}  // namespace android::hidl::base::V1_0
