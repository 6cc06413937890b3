// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Building blocks of the AIDL interfaces. Calls travel as C++ closures over copied arguments
// instead of parcels.
#pragma once

#include <android/binder_interface_utils.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "binder.h"
#include "quorvel/fake/thread_annotations.h"
#include "status.h"

namespace norvik::qel::fake {

// The class of I's objects, whose args are a shared_ptr to the object.
template <typename I>
const AIBinder_Class& ClassOf() {
  using Object = std::shared_ptr<ndk::ICInterface>;
  static const AIBinder_Class clazz = {
      .descriptor = I::descriptor,
      .object = [](void* args) -> Object& { return *static_cast<Object*>(args); },
      .destroy = [](void* args) { delete static_cast<Object*>(args); }};
  return clazz;
}

// createBinder() of each local side.
template <typename I>
ndk::SpAIBinder MakeLocal(std::shared_ptr<ndk::ICInterface> object) {
  return ndk::SpAIBinder(
      AIBinder_new(&ClassOf<I>(), new std::shared_ptr<ndk::ICInterface>(std::move(object))));
}

// fromBinder() of each interface.
template <typename I, typename Proxy>
std::shared_ptr<I> FromBinder(const ndk::SpAIBinder& binder) {
  if (!AIBinder_associateClass(binder.get(), &ClassOf<I>())) return nullptr;
  if (LocalBinder* local = binder.get()->AsLocal()) {
    return std::static_pointer_cast<I>(local->object());
  }
  return ndk::SharedRefBase::make<Proxy>(binder);
}

// Carries one argument of a call. The caller's thread constructs it. Arrive() and Pass() run on the
// service's thread. After a successful call, Deliver() runs on the caller's thread.
template <typename T>
struct Parcelled {
  explicit Parcelled(const T& value) : value(value) {}
  bool Arrive() { return true; }
  const T& Pass() { return value; }
  void Deliver(const T&) {}
  T value;
};

// A result. The service writes to storage that the call owns.
template <typename T>
struct Parcelled<T*> {
  explicit Parcelled(T*) {}
  bool Arrive() { return true; }
  T* Pass() { return &value; }
  void Deliver(T* out) { *out = std::move(value); }
  T value{};
};

// An interface. The receiver gets its own reference. Null is passed on: a service must handle it.
template <typename I>
requires std::is_base_of_v<ndk::ICInterface, I>
struct Parcelled<std::shared_ptr<I>> {
  explicit Parcelled(const std::shared_ptr<I>& object) {
    if (object != nullptr) binder = object->asBinder();
  }
  // False if the service's process has died meanwhile: a dead process takes no references.
  bool Arrive() {
    if (binder.get() == nullptr) return true;
    object = I::fromBinder(Process::Current()->Reach(std::exchange(binder, {}).get()));
    return object != nullptr;
  }
  std::shared_ptr<I> Pass() { return std::move(object); }
  void Deliver(const std::shared_ptr<I>&) {}
  ndk::SpAIBinder binder;
  std::shared_ptr<I> object;
};

template <typename T>
using ParcelledArg = Parcelled<std::remove_cvref_t<T>>;

// The value set by setDefaultImpl(). Leaked on purpose: binder threads may outlive main().
template <typename I>
std::shared_ptr<I>& DefaultImpl() {
  static auto& impl = *new std::shared_ptr<I>;
  return impl;
}

// Base of the proxies of I. C is the interface that declares the method: I or a base of it.
template <typename I>
class ProxyOf : public ndk::BpCInterface<I> {
 public:
  using ndk::BpCInterface<I>::BpCInterface;

 protected:
  // A synchronous call. If the service does not implement the method, the default implementation is
  // called, if there is one.
  template <typename C, typename... Params, typename... Args>
  ndk::ScopedAStatus Call(ndk::ScopedAStatus (C::*method)(Params...), Args&&... args) {
    struct Call {
      explicit Call(const std::remove_cvref_t<Params>&... values) : params(values...) {}
      std::tuple<ParcelledArg<Params>...> params;
      ndk::ScopedAStatus status;
    };
    auto call = std::make_shared<Call>(args...);
    const ndk::SpAIBinder binder = this->asBinder();
    const bool served = binder.get()->AsRemote()->CallAndWait([call, method](LocalBinder& target) {
      I& object = static_cast<I&>(*target.object());
      call->status = std::apply(
          [&](auto&... param) {
            if (!(param.Arrive() && ...)) return ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
            return (object.*method)(param.Pass()...);
          },
          call->params);
    });
    if (!served) return ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    // A service that returns a null status crashes here, as it does on a device.
    if (AStatus_getStatus(call->status.get()) == STATUS_UNKNOWN_TRANSACTION &&
        DefaultImpl<I>() != nullptr) {
      return (DefaultImpl<I>().get()->*method)(std::forward<Args>(args)...);
    }
    if (AStatus_isOk(call->status.get())) {
      std::apply([&](auto&... param) { (param.Deliver(args), ...); }, call->params);
    }
    return ndk::ScopedAStatus(Clone(call->status.get()));
  }

  // A one-way call. Ok as soon as the call is queued.
  template <typename... Params, typename... Args>
  ndk::ScopedAStatus Send(ndk::ScopedAStatus (I::*method)(Params...), const Args&... args) {
    const ndk::SpAIBinder binder = this->asBinder();
    const bool sent = binder.get()->AsRemote()->PostOneway(
        [method,
         params = std::tuple<std::remove_cvref_t<Params>...>(args...)](LocalBinder& target) {
          I& object = static_cast<I&>(*target.object());
          std::apply([&](const auto&... param) { (object.*method)(param...); }, params);
        });
    return sent ? ndk::ScopedAStatus::ok() : ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
  }
};

// Base of the proxies of a generated interface: asks the service once for its version and once for
// its hash, and keeps the answers.
template <typename I>
class GeneratedProxyOf : public ProxyOf<I> {
 public:
  using ProxyOf<I>::ProxyOf;

  ndk::ScopedAStatus getInterfaceVersion(int32_t* out) final {
    return AskOnce(&I::getInterfaceVersion, &GeneratedProxyOf::version_, out);
  }
  ndk::ScopedAStatus getInterfaceHash(std::string* out) final {
    return AskOnce(&I::getInterfaceHash, &GeneratedProxyOf::hash_, out);
  }

 private:
  template <typename Method, typename T>
  ndk::ScopedAStatus AskOnce(Method method, std::optional<T> GeneratedProxyOf::*answer, T* out) {
    std::lock_guard<std::mutex> lock(lock_);
    std::optional<T>& known = this->*answer;
    if (!known) {
      T value{};
      ndk::ScopedAStatus status = this->Call(method, &value);
      if (!status.isOk()) return status;
      known = std::move(value);
    }
    *out = *known;
    return ndk::ScopedAStatus::ok();
  }

  std::mutex lock_;
  std::optional<int32_t> version_ QUORVEL_GUARDED_BY(lock_);
  std::optional<std::string> hash_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::fake

namespace ndk::internal {

template <typename I, typename PROXY>
std::shared_ptr<I> Generated<I, PROXY>::fromBinder(const SpAIBinder& binder) {
  return norvik::qel::fake::FromBinder<I, PROXY>(binder);
}

template <typename I, typename PROXY>
bool Generated<I, PROXY>::setDefaultImpl(const std::shared_ptr<I>& impl) {
  if (impl == nullptr) return false;
  norvik::qel::fake::DefaultImpl<I>() = impl;
  return true;
}

template <typename I, typename PROXY>
const std::shared_ptr<I>& Generated<I, PROXY>::getDefaultImpl() {
  return norvik::qel::fake::DefaultImpl<I>();
}

template <typename I>
SpAIBinder GeneratedLocal<I>::createBinder() {
  return norvik::qel::fake::MakeLocal<I>(this->template ref<ICInterface>());
}

}  // namespace ndk::internal
