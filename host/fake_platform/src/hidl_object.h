// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Access to HIDL objects of other processes: a binder per object, proxies, and look-ups.
#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <utils/Errors.h>

#include <memory>
#include <string>

#include "binder.h"
#include "quorvel/fake/platform_scripts.h"

namespace norvik::qel::fake {

using HidlBase = ::android::hidl::base::V1_0::IBase;

// The binder of `object`: the reference of a proxy, or the binder of a local object. A local object
// has one binder as long as a reference to that binder is held. Empty for null.
ndk::SpAIBinder BinderOf(const ::android::sp<HidlBase>& object);

// The object behind a local binder.
HidlBase& HidlObject(const LocalBinder& binder);

// Starts the HIDL threads of the calling process. The platform starts them on its own, as soon as a
// call or a death notification can arrive.
void StartHidlThreads();

// The calling process's reference to a service. Empty if there is none. `function` is
// kTryGetHidlService, or kGetHidlService, which waits for a declared service.
ndk::SpAIBinder LookUpHidl(BinderFunction function, const std::string& descriptor,
                           const std::string& name, bool get_stub);
// Registers a service under each of its interfaces.
::android::status_t AddHidl(const ::android::sp<HidlBase>& service, const std::string& name);

// Base of every proxy: the reference, and the links to death made through it.
class HidlProxy {
 public:
  HidlProxy(const HidlProxy&) = delete;
  HidlProxy& operator=(const HidlProxy&) = delete;

  const ndk::SpAIBinder& binder() const { return binder_; }

 protected:
  explicit HidlProxy(ndk::SpAIBinder binder) : binder_(std::move(binder)) {}
  // Ends the links without notifications.
  virtual ~HidlProxy();

  bool LinkRecipient(const ::android::sp<::android::hardware::hidl_death_recipient>& recipient,
                     uint64_t cookie, const ::android::wp<HidlBase>& who);
  bool UnlinkRecipient(const ::android::sp<::android::hardware::hidl_death_recipient>& recipient);

 private:
  const ndk::SpAIBinder binder_;
  const std::shared_ptr<RecipientState> links_ = std::make_shared<RecipientState>();
};

}  // namespace norvik::qel::fake
