// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Building blocks of the HIDL interfaces. Calls travel as in remote_call.h.
#pragma once

#include <android/log.h>

#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "hidl_object.h"
#include "remote_call.h"

namespace norvik::qel::fake {

// The object itself if `binder` is local, otherwise a new proxy. Null if `binder` is empty.
template <typename I>
::android::sp<I> FromHidlBinder(const ndk::SpAIBinder& binder) {
  if (binder.get() == nullptr) return nullptr;
  if (const LocalBinder* local = binder.get()->AsLocal()) {
    return static_cast<I*>(&HidlObject(*local));
  }
  return ::android::sp<typename I::BpHw>::make(binder);
}

// A result callback. The service fills storage that the call owns; the caller's callback reads it.
template <typename... Results>
struct Parcelled<std::function<void(Results...)>> {
  using Callback = std::function<void(Results...)>;
  explicit Parcelled(const Callback&) {}
  bool Arrive() { return true; }
  Callback Pass() {
    return [this](Results... values) {
      if (results) __android_log_assert(nullptr, "hidl", "a result callback is called twice");
      results.emplace(values...);
    };
  }
  void Deliver(const Callback& callback) { std::apply(callback, *results); }
  std::optional<std::tuple<std::remove_cvref_t<Results>...>> results;
};

// An object. The receiver gets its own reference. Null is passed on as null.
template <typename I>
requires std::is_base_of_v<HidlBase, I>
struct Parcelled<::android::sp<I>> {
  explicit Parcelled(const ::android::sp<I>& given) : binder(BinderOf(given)) {
    if (given != nullptr) StartHidlThreads();  // the service may call it
  }
  // False if the service's process has died meanwhile: a dead process takes no references.
  bool Arrive() {
    if (binder.get() == nullptr) return true;
    object = FromHidlBinder<I>(Process::Current()->Reach(std::exchange(binder, {}).get()));
    return object != nullptr;
  }
  ::android::sp<I> Pass() { return std::move(object); }
  void Deliver(const ::android::sp<I>&) {}
  ndk::SpAIBinder binder;
  ::android::sp<I> object;
};

// Whether an argument is a result callback and null.
template <typename T>
bool IsNoCallback(const T&) {
  return false;
}
template <typename... Results>
bool IsNoCallback(const std::function<void(Results...)>& callback) {
  return callback == nullptr;
}

// A service that returns success must have called the result callback.
template <typename T>
void AssertAnswered(const Parcelled<T>&) {}
template <typename... Results>
void AssertAnswered(const Parcelled<std::function<void(Results...)>>& callback) {
  if (!callback.results) __android_log_assert(nullptr, "hidl", "a result callback is not called");
}

// A synchronous call on the object behind a proxy's binder.
template <typename I, typename... Params>
::android::hardware::Return<void> CallHidl(
    const ndk::SpAIBinder& binder, ::android::hardware::Return<void> (I::*method)(Params...),
    const std::type_identity_t<std::remove_cvref_t<Params>>&... args) {
  using ::android::hardware::Return;
  using ::android::hardware::Status;
  struct Call {
    explicit Call(const std::remove_cvref_t<Params>&... values) : params(values...) {}
    std::tuple<ParcelledArg<Params>...> params;
    Status status;
  };
  if ((IsNoCallback(args) || ...)) {
    return Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT, "a result callback is null");
  }
  auto call = std::make_shared<Call>(args...);
  const bool served = binder.get()->AsRemote()->CallAndWait([call, method](LocalBinder& target) {
    I& object = static_cast<I&>(HidlObject(target));
    std::apply(
        [&](auto&... param) {
          if (!(param.Arrive() && ...)) {
            call->status = Status::fromStatusT(::android::DEAD_OBJECT);
            return;
          }
          const Return<void> result = (object.*method)(param.Pass()...);
          if (result.isOk()) {
            (AssertAnswered(param), ...);
          } else {
            call->status = StatusToCarry(result);
          }
        },
        call->params);
  });
  if (!served) return Status::fromStatusT(::android::DEAD_OBJECT);
  if (call->status.isOk()) {
    std::apply([&](auto&... param) { (param.Deliver(args), ...); }, call->params);
  }
  return call->status;
}

// A one-way call. Ok as soon as the call is queued.
template <typename I, typename... Params>
::android::hardware::Return<void> SendHidl(
    const ndk::SpAIBinder& binder, ::android::hardware::Return<void> (I::*method)(Params...),
    const std::type_identity_t<std::remove_cvref_t<Params>>&... args) {
  const bool sent = binder.get()->AsRemote()->PostOneway(
      [method, params = std::tuple<std::remove_cvref_t<Params>...>(args...)](LocalBinder& target) {
        I& object = static_cast<I&>(HidlObject(target));
        const auto result =
            std::apply([&](const auto&... param) { return (object.*method)(param...); }, params);
        static_cast<void>(result.isOk());  // the sender never sees a failure
      });
  if (sent) return ::android::hardware::Void();
  return ::android::hardware::Status::fromStatusT(::android::DEAD_OBJECT);
}

// The members of IBase for a proxy of I.
template <typename I>
class HidlProxyOf : public I, public HidlProxy {
 public:
  template <typename T>
  using Return = ::android::hardware::Return<T>;

  explicit HidlProxyOf(ndk::SpAIBinder binder) : HidlProxy(std::move(binder)) {}

  bool isRemote() const override { return true; }
  Return<void> interfaceChain(HidlBase::interfaceChain_cb _hidl_cb) override {
    return CallHidl(binder(), &HidlBase::interfaceChain, _hidl_cb);
  }
  Return<void> debug(
      const ::android::hardware::hidl_handle& fd,
      const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& options) override {
    return CallHidl(binder(), &HidlBase::debug, fd, options);
  }
  Return<void> interfaceDescriptor(HidlBase::interfaceDescriptor_cb _hidl_cb) override {
    return CallHidl(binder(), &HidlBase::interfaceDescriptor, _hidl_cb);
  }
  Return<void> getHashChain(HidlBase::getHashChain_cb _hidl_cb) override {
    return CallHidl(binder(), &HidlBase::getHashChain, _hidl_cb);
  }
  Return<void> setHALInstrumentation() override {
    return SendHidl(binder(), &HidlBase::setHALInstrumentation);
  }
  Return<bool> linkToDeath(
      const ::android::sp<::android::hardware::hidl_death_recipient>& recipient,
      uint64_t cookie) override {
    return LinkRecipient(recipient, cookie, ::android::wp<HidlBase>(this));
  }
  Return<void> ping() override { return CallHidl(binder(), &HidlBase::ping); }
  Return<void> getDebugInfo(HidlBase::getDebugInfo_cb _hidl_cb) override {
    return CallHidl(binder(), &HidlBase::getDebugInfo, _hidl_cb);
  }
  Return<void> notifySyspropsChanged() override {
    return SendHidl(binder(), &HidlBase::notifySyspropsChanged);
  }
  Return<bool> unlinkToDeath(
      const ::android::sp<::android::hardware::hidl_death_recipient>& recipient) override {
    return UnlinkRecipient(recipient);
  }
};

}  // namespace norvik::qel::fake

namespace android::hardware::details {

namespace fake = ::norvik::qel::fake;

template <typename I, typename PARENT, typename PROXY>
Return<void> Generated<I, PARENT, PROXY>::interfaceChain(
    fake::HidlBase::interfaceChain_cb _hidl_cb) {
  return PARENT::interfaceChain([&](const auto& extended) {
    std::vector<hidl_string> chain = {I::descriptor};
    chain.insert(chain.end(), extended.begin(), extended.end());
    _hidl_cb(chain);
  });
}

template <typename I, typename PARENT, typename PROXY>
Return<void> Generated<I, PARENT, PROXY>::interfaceDescriptor(
    fake::HidlBase::interfaceDescriptor_cb _hidl_cb) {
  _hidl_cb(I::descriptor);
  return Void();
}

template <typename I, typename PARENT, typename PROXY>
Return<sp<I>> Generated<I, PARENT, PROXY>::CastFromBase(const sp<fake::HidlBase>& parent,
                                                        bool emitError) {
  if (parent == nullptr) return sp<I>();
  bool implemented = false;
  const auto asked = parent->interfaceChain(
      [&](const auto& descriptors) { implemented = descriptors.contains(I::descriptor); });
  if (!asked.isOk() && emitError) return StatusToCarry(asked);
  if (!asked.isOk() || !implemented) return sp<I>();
  if (!parent->isRemote()) return sp<I>(static_cast<I*>(parent.get()));
  return fake::FromHidlBinder<I>(fake::BinderOf(parent));
}

template <typename I, typename PARENT, typename PROXY>
sp<I> Generated<I, PARENT, PROXY>::tryGetService(const std::string& serviceName, bool getStub) {
  return fake::FromHidlBinder<I>(fake::LookUpHidl(fake::BinderFunction::kTryGetHidlService,
                                                  I::descriptor, serviceName, getStub));
}

template <typename I, typename PARENT, typename PROXY>
sp<I> Generated<I, PARENT, PROXY>::getService(const std::string& serviceName, bool getStub) {
  return fake::FromHidlBinder<I>(
      fake::LookUpHidl(fake::BinderFunction::kGetHidlService, I::descriptor, serviceName, getStub));
}

template <typename I, typename PARENT, typename PROXY>
status_t Generated<I, PARENT, PROXY>::registerAsService(const std::string& serviceName) {
  return fake::AddHidl(this, serviceName);
}

}  // namespace android::hardware::details
