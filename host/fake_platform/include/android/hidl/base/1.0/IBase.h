// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: what every HIDL interface can do.
//
// A result callback runs on the caller's thread before the call returns, at most once. It does not
// run if the transport fails. Its arguments are valid only while it runs.
#pragma once

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>

namespace android::hidl::base::V1_0 {

struct DebugInfo final {
  enum class Architecture : int32_t { UNKNOWN = 0, IS_64BIT = 1, IS_32BIT = 2 };
  int32_t pid;
  uint64_t ptr;
  Architecture arch;
};

struct IBase : virtual public RefBase {
  static inline const char* descriptor = "android.hidl.base@1.0::IBase";

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

namespace android::hardware::details {

// What every generated interface I shares. A real generated header spells it out. I defines its
// descriptor and extends PARENT. PROXY is the class of its proxies.
template <typename I, typename PARENT, typename PROXY>
struct Generated : public PARENT {
  using BpHw = PROXY;  // for the transport

  Return<void> interfaceChain(
      ::android::hidl::base::V1_0::IBase::interfaceChain_cb _hidl_cb) override;
  Return<void> interfaceDescriptor(
      ::android::hidl::base::V1_0::IBase::interfaceDescriptor_cb _hidl_cb) override;

  // `parent` is an I or what I extends. For any other interface, pass its IBase. Null if the object
  // does not implement I.
  template <typename FROM>
  requires std::is_base_of_v<FROM, I>
  static Return<sp<I>> castFrom(const sp<FROM>& parent, bool emitError = false) {
    if constexpr (std::is_same_v<FROM, I>) return parent;
    return CastFromBase(parent, emitError);
  }

  // Each call returns a new proxy of a remote service. tryGetService() does not wait: it returns
  // null if the service is not declared or not running. getService() waits for a declared service.
  // Both return null with getStub.
  static sp<I> tryGetService(const std::string& serviceName = "default", bool getStub = false);
  static sp<I> tryGetService(const char* serviceName, bool getStub = false) {
    return tryGetService(hidl_string(serviceName), getStub);
  }
  static sp<I> tryGetService(const hidl_string& serviceName, bool getStub = false) {
    return tryGetService(std::string(serviceName.c_str(), serviceName.size()), getStub);
  }
  static sp<I> tryGetService(bool getStub) { return tryGetService("default", getStub); }
  static sp<I> getService(const std::string& serviceName = "default", bool getStub = false);
  static sp<I> getService(const char* serviceName, bool getStub = false) {
    return getService(hidl_string(serviceName), getStub);
  }
  static sp<I> getService(const hidl_string& serviceName, bool getStub = false) {
    return getService(std::string(serviceName.c_str(), serviceName.size()), getStub);
  }
  static sp<I> getService(bool getStub) { return getService("default", getStub); }

  __attribute__((warn_unused_result)) status_t registerAsService(
      const std::string& serviceName = "default");

 private:
  static Return<sp<I>> CastFromBase(const sp<::android::hidl::base::V1_0::IBase>& parent,
                                    bool emitError);
};

}  // namespace android::hardware::details
