// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: the bases of generated interface code.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ndk {

// An object that is owned by shared_ptrs only. make() creates it, ref() returns a further
// reference.
class SharedRefBase {
 public:
  SharedRefBase() = default;
  SharedRefBase(const SharedRefBase&) = delete;
  SharedRefBase& operator=(const SharedRefBase&) = delete;
  // Aborts if no reference was ever made, or if ref() could still return one.
  virtual ~SharedRefBase();

  template <class T, class... Args>
  static std::shared_ptr<T> make(Args&&... args) {
    T* object = new T(std::forward<Args>(args)...);
    return object->template ref<T>();
  }

  std::shared_ptr<SharedRefBase> ref();
  template <class CHILD>
  std::shared_ptr<CHILD> ref() {
    return std::static_pointer_cast<CHILD>(ref());
  }

  static void operator delete(void* memory) { std::free(memory); }

 private:
  static void* operator new(size_t size) {
    void* memory = std::malloc(size);
    if (memory == nullptr) std::abort();
    return memory;
  }

  std::once_flag first_reference_;
  bool referenced_ = false;  // ref() has been called
  std::weak_ptr<SharedRefBase> self_;
};

// Any interface, local or remote.
class ICInterface : public SharedRefBase {
 public:
  virtual SpAIBinder asBinder() = 0;
  virtual bool isRemote() = 0;
  virtual binder_status_t dump(int fd, const char** args, uint32_t numArgs);
  virtual binder_status_t handleShellCommand(int in, int out, int err, const char** argv,
                                             uint32_t argc);
  // The object behind a local binder; null for a remote one.
  static std::shared_ptr<ICInterface> asInterface(AIBinder* binder);
};

// The local side of INTERFACE: a service, or a callback that is handed to one.
template <typename INTERFACE>
class BnCInterface : public INTERFACE {
 public:
  // The first call makes an AIBinder that holds this object. The object holds the AIBinder weakly:
  // after its last reference is gone, the next call makes a new one.
  SpAIBinder asBinder() final {
    std::lock_guard<std::mutex> lock(lock_);
    SpAIBinder binder = binder_.promote();
    if (binder.get() == nullptr) {
      binder = createBinder();
      binder_.set(AIBinder_Weak_new(binder.get()));
    }
    return binder;
  }
  bool isRemote() final { return false; }
  static std::string makeServiceName(std::string_view instance) {
    return INTERFACE::descriptor + ("/" + std::string(instance));
  }

 protected:
  virtual SpAIBinder createBinder() = 0;

 private:
  std::mutex lock_;
#if defined(__clang__) && defined(_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
  __attribute__((guarded_by(lock_)))
#endif
  ScopedAIBinder_Weak binder_;
};

// The remote side of INTERFACE: holds the binder strongly.
template <typename INTERFACE>
class BpCInterface : public INTERFACE {
 public:
  explicit BpCInterface(const SpAIBinder& binder) : binder_(binder) {}
  SpAIBinder asBinder() final { return binder_; }
  bool isRemote() final { return AIBinder_isRemote(binder_.get()); }
  binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
    return AIBinder_dump(binder_.get(), fd, args, numArgs);
  }

 private:
  SpAIBinder binder_;
};

// What the classes of every generated interface share. A real generated header spells it out.
namespace internal {

// The base of interface I, which defines its descriptor, version and hash. PROXY is the class of
// its proxies.
template <typename I, typename PROXY>
class Generated : public ICInterface {
 public:
  // The object itself if it is local, otherwise a new proxy. Null if the object is of another class
  // or cannot be asked.
  static std::shared_ptr<I> fromBinder(const SpAIBinder& binder);
  // Sets the implementation that answers calls which a service does not implement
  // (STATUS_UNKNOWN_TRANSACTION). Set it once, before the first call. False for null.
  static bool setDefaultImpl(const std::shared_ptr<I>& impl);
  static const std::shared_ptr<I>& getDefaultImpl();

  virtual ScopedAStatus getInterfaceVersion(int32_t* out) = 0;
  virtual ScopedAStatus getInterfaceHash(std::string* out) = 0;
};

// The local side of I.
template <typename I>
class GeneratedLocal : public BnCInterface<I> {
 public:
  ScopedAStatus getInterfaceVersion(int32_t* out) final {
    *out = I::version;
    return ScopedAStatus::ok();
  }
  ScopedAStatus getInterfaceHash(std::string* out) final {
    *out = I::hash;
    return ScopedAStatus::ok();
  }

 protected:
  SpAIBinder createBinder() override;
};

}  // namespace internal
}  // namespace ndk

// Objects of these types are made with SharedRefBase::make() only. As on the platform, a second
// candidate makes std::make_shared() and std::make_unique() ambiguous for them.
namespace std {
template <typename T, typename... Args>
requires std::is_base_of_v<::ndk::SharedRefBase, T> shared_ptr<T> make_shared(Args&&...)
= delete;
template <typename T, typename... Args>
requires std::is_base_of_v<::ndk::SharedRefBase, T> unique_ptr<T> make_unique(Args&&...)
= delete;
}  // namespace std
