// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Building blocks of the AIDL interfaces. Calls travel as C++ closures over copied arguments
// instead of parcels.
#pragma once

#include <android/binder_interface_utils.h>

#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

#include "binder.h"
#include "quorvel/fake/thread_annotations.h"
#include "status.h"

namespace norvik::qel::fake {

// Makes the binder of a local object.
template <const AIBinder_Class& kClass>
ndk::SpAIBinder MakeLocal(std::shared_ptr<ndk::ICInterface> object) {
  return ndk::SpAIBinder(
      AIBinder_new(&kClass, new std::shared_ptr<ndk::ICInterface>(std::move(object))));
}

// For the AIBinder_Class of each interface, whose args are a shared_ptr to the object.
inline std::shared_ptr<ndk::ICInterface>& ObjectOf(void* args) {
  return *static_cast<std::shared_ptr<ndk::ICInterface>*>(args);
}
inline void DestroyArgs(void* args) {
  delete static_cast<std::shared_ptr<ndk::ICInterface>*>(args);
}

// fromBinder() of each interface: the object itself if it is local, otherwise a new proxy. Null if
// the object is of another class or cannot be asked.
template <typename Interface, typename Proxy, const AIBinder_Class& kClass>
std::shared_ptr<Interface> FromBinder(const ndk::SpAIBinder& binder) {
  if (!AIBinder_associateClass(binder.get(), &kClass)) return nullptr;
  if (LocalBinder* local = binder.get()->AsLocal()) {
    return std::static_pointer_cast<Interface>(local->object());
  }
  return ndk::SharedRefBase::make<Proxy>(binder);
}

// Carries one argument of a call. The caller's thread constructs it. Arrive() and Pass() run on the
// service's thread. After a successful call, Deliver() runs on the caller's thread.
template <typename T>
struct Parcelled {
  explicit Parcelled(const T& value) : value(value) {}
  bool ok() const { return true; }
  bool Arrive() { return true; }
  const T& Pass() { return value; }
  void Deliver(const T&) {}
  T value;
};

// A result. The service writes to storage that the call owns.
template <typename T>
struct Parcelled<T*> {
  explicit Parcelled(T*) {}
  bool ok() const { return true; }
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
  bool ok() const { return true; }
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

// setDefaultImpl() of each interface.
template <typename I>
bool SetDefaultImpl(const std::shared_ptr<I>& impl) {
  if (impl == nullptr) return false;
  DefaultImpl<I>() = impl;
  return true;
}

// A synchronous call on the object behind a proxy's binder. If the service does not implement the
// method, the default implementation is called, if there is one.
template <typename I, typename... Params, typename... Args>
ndk::ScopedAStatus CallRemote(const ndk::SpAIBinder& binder,
                              ndk::ScopedAStatus (I::*method)(Params...), Args&&... args) {
  struct Call {
    explicit Call(const std::remove_cvref_t<Params>&... values) : params(values...) {}
    std::tuple<ParcelledArg<Params>...> params;
    ndk::ScopedAStatus status;
  };
  auto call = std::make_shared<Call>(args...);
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
template <typename I, typename... Params, typename... Args>
ndk::ScopedAStatus SendRemote(const ndk::SpAIBinder& binder,
                              ndk::ScopedAStatus (I::*method)(Params...), const Args&... args) {
  const bool sent = binder.get()->AsRemote()->PostOneway(
      [method, params = std::tuple<std::remove_cvref_t<Params>...>(args...)](LocalBinder& target) {
        I& object = static_cast<I&>(*target.object());
        std::apply([&](const auto&... param) { (object.*method)(param...); }, params);
      });
  return sent ? ndk::ScopedAStatus::ok() : ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
}

// getInterfaceVersion() and getInterfaceHash() of a proxy: asks the service once, keeps the answer.
template <typename T>
class AskedOnce {
 public:
  template <typename Ask>
  ndk::ScopedAStatus Get(T* out, Ask ask) {
    std::lock_guard<std::mutex> lock(lock_);
    if (!known_) {
      ndk::ScopedAStatus status = ask(&value_);
      if (!status.isOk()) return status;
      known_ = true;
    }
    *out = value_;
    return ndk::ScopedAStatus::ok();
  }

 private:
  std::mutex lock_;
  bool known_ QUORVEL_GUARDED_BY(lock_) = false;
  T value_ QUORVEL_GUARDED_BY(lock_){};
};

}  // namespace norvik::qel::fake
