// How HIDL objects are reached from other processes: a binder per object, and proxies.
#pragma once

#include <android/hidl/base/1.0/IBase.h>

#include <memory>

#include "binder.h"

namespace norvik::qel::fake {

using HidlBase = ::android::hidl::base::V1_0::IBase;

// The binder that leads to `object`: a proxy's reference, or the one binder that a local object has
// as long as anybody keeps it. Empty for null.
ndk::SpAIBinder BinderOf(const ::android::sp<HidlBase>& object);

// The object behind a local binder.
HidlBase& HidlObject(const LocalBinder& binder);

// Starts the HIDL threads of the calling process: they come by themselves with the first thing that
// can arrive.
void StartHidlThreads();

// What a proxy is besides its interface: a reference, and the links to death made through it.
class HidlProxy {
 public:
  HidlProxy(const HidlProxy&) = delete;
  HidlProxy& operator=(const HidlProxy&) = delete;

  const ndk::SpAIBinder& binder() const { return binder_; }

 protected:
  explicit HidlProxy(ndk::SpAIBinder binder) : binder_(std::move(binder)) {}
  // Ends the links silently.
  virtual ~HidlProxy();

  bool LinkRecipient(const ::android::sp<::android::hardware::hidl_death_recipient>& recipient,
                     uint64_t cookie, const ::android::wp<HidlBase>& who);
  bool UnlinkRecipient(const ::android::sp<::android::hardware::hidl_death_recipient>& recipient);

 private:
  const ndk::SpAIBinder binder_;
  const std::shared_ptr<RecipientState> links_ = std::make_shared<RecipientState>();
};

}  // namespace norvik::qel::fake
