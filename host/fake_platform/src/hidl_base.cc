// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// IBase, the base of every HIDL interface: the local side.
#include <android/hidl/base/1.0/IBase.h>

namespace android::hidl::base::V1_0 {

using hardware::Return;
using hardware::Void;

bool IBase::isRemote() const {
  return false;
}

// NOLINTBEGIN(performance-unnecessary-value-param): the platform's signatures
Return<void> IBase::interfaceChain(interfaceChain_cb _hidl_cb) {
  _hidl_cb({descriptor});
  return Void();
}

Return<void> IBase::debug(const hardware::hidl_handle& /*fd*/,
                          const hardware::hidl_vec<hardware::hidl_string>& /*options*/) {
  return Void();
}

Return<void> IBase::interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {
  _hidl_cb(descriptor);
  return Void();
}

Return<void> IBase::getHashChain(getHashChain_cb _hidl_cb) {
  // One hash per interface of the chain. The fake platform has no hashes: all are zero.
  size_t interfaces = 0;
  const Return<void> asked =
      interfaceChain([&](const auto& descriptors) { interfaces = descriptors.size(); });
  asked.assertOk();  // a local call
  _hidl_cb(hardware::hidl_vec<hardware::hidl_array<uint8_t, 32>>(interfaces));
  return Void();
}

Return<void> IBase::setHALInstrumentation() {
  return Void();
}

Return<bool> IBase::linkToDeath(const sp<hardware::hidl_death_recipient>& recipient,
                                uint64_t /*cookie*/) {
  return recipient != nullptr;
}

Return<void> IBase::ping() {
  return Void();
}

Return<void> IBase::getDebugInfo(getDebugInfo_cb _hidl_cb) {
  _hidl_cb({.pid = -1, .ptr = 0, .arch = DebugInfo::Architecture::IS_64BIT});
  return Void();
}

Return<void> IBase::notifySyspropsChanged() {
  return Void();
}

Return<bool> IBase::unlinkToDeath(const sp<hardware::hidl_death_recipient>& recipient) {
  return recipient != nullptr;
}

Return<sp<IBase>> IBase::castFrom(const sp<IBase>& parent, bool /*emitError*/) {
  return parent;
}

// NOLINTEND(performance-unnecessary-value-param)

}  // namespace android::hidl::base::V1_0
