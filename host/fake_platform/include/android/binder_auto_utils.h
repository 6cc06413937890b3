// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: owning C++ types for the binder C API.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>
#include <unistd.h>

#include <compare>
#include <cstddef>
#include <ostream>
#include <string>
#include <utility>

namespace ndk {

// A strong reference to a binder. A copy takes a reference of its own.
class SpAIBinder {
 public:
  SpAIBinder() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): implicit on the platform, too
  SpAIBinder(std::nullptr_t) {}
  // Takes over a reference that the caller owns, without an increment.
  explicit SpAIBinder(AIBinder* binder) : binder_(binder) {}
  SpAIBinder(const SpAIBinder& other) : binder_(other.binder_) { AIBinder_incStrong(binder_); }
  SpAIBinder(SpAIBinder&& other) noexcept : binder_(std::exchange(other.binder_, nullptr)) {}
  ~SpAIBinder() { set(nullptr); }

  SpAIBinder& operator=(SpAIBinder other) noexcept {
    std::swap(binder_, other.binder_);
    return *this;
  }

  AIBinder* get() const { return binder_; }
  // Takes over `binder` and releases the old reference.
  void set(AIBinder* binder) {
    AIBinder* old = std::exchange(binder_, binder);
    if (old != nullptr) AIBinder_decStrong(old);
  }
  AIBinder** getR() { return &binder_; }

 private:
  AIBinder* binder_ = nullptr;
};

inline bool operator==(const SpAIBinder& left, const SpAIBinder& right) {
  return left.get() == right.get();
}
inline bool operator==(const SpAIBinder& left, AIBinder* right) {
  return left.get() == right;
}
inline std::strong_ordering operator<=>(const SpAIBinder& left, const SpAIBinder& right) {
  return left.get() <=> right.get();
}
inline std::strong_ordering operator<=>(const SpAIBinder& left, AIBinder* right) {
  return left.get() <=> right;
}

namespace impl {

// Base of the move-only owners. `Free` is called with every owned value except `DEFAULT`.
template <typename T, auto Free, T DEFAULT>
class ScopedAResource {
 public:
  explicit ScopedAResource(T value = DEFAULT) : value_(value) {}
  ScopedAResource(ScopedAResource&& other) noexcept
      : value_(std::exchange(other.value_, DEFAULT)) {}
  ScopedAResource& operator=(ScopedAResource&& other) noexcept {
    if (this != &other) set(std::exchange(other.value_, DEFAULT));
    return *this;
  }
  ScopedAResource(const ScopedAResource&) = delete;
  ScopedAResource& operator=(const ScopedAResource&) = delete;
  ~ScopedAResource() { set(DEFAULT); }

  T get() { return value_; }
  const T get() const { return value_; }
  // Takes over `value` and frees the old one.
  void set(T value) {
    T old = std::exchange(value_, value);
    if (old != DEFAULT) Free(old);
  }
  [[nodiscard]] T release() { return std::exchange(value_, DEFAULT); }
  T* getR() { return &value_; }

 private:
  T value_;
};

}  // namespace impl

// The outcome of one call. Null only when default-constructed; isOk() is false then.
class ScopedAStatus : public impl::ScopedAResource<AStatus*, AStatus_delete, nullptr> {
 public:
  explicit ScopedAStatus(AStatus* status = nullptr) : ScopedAResource(status) {}

  bool isOk() const { return get() != nullptr && AStatus_isOk(get()); }
  binder_exception_t getExceptionCode() const { return AStatus_getExceptionCode(get()); }
  int32_t getServiceSpecificError() const { return AStatus_getServiceSpecificError(get()); }
  binder_status_t getStatus() const { return AStatus_getStatus(get()); }
  const char* getMessage() const { return AStatus_getMessage(get()); }
  std::string getDescription() const {
    const char* text = AStatus_getDescription(get());
    std::string description(text);
    AStatus_deleteDescription(text);
    return description;
  }

  static ScopedAStatus ok() { return ScopedAStatus(AStatus_newOk()); }
  static ScopedAStatus fromExceptionCode(binder_exception_t exception) {
    return ScopedAStatus(AStatus_fromExceptionCode(exception));
  }
  static ScopedAStatus fromExceptionCodeWithMessage(binder_exception_t exception,
                                                    const char* message) {
    return ScopedAStatus(AStatus_fromExceptionCodeWithMessage(exception, message));
  }
  static ScopedAStatus fromServiceSpecificError(int32_t error) {
    return ScopedAStatus(AStatus_fromServiceSpecificError(error));
  }
  static ScopedAStatus fromServiceSpecificErrorWithMessage(int32_t error, const char* message) {
    return ScopedAStatus(AStatus_fromServiceSpecificErrorWithMessage(error, message));
  }
  static ScopedAStatus fromStatus(binder_status_t status) {
    return ScopedAStatus(AStatus_fromStatus(status));
  }
};

inline std::ostream& operator<<(std::ostream& os, const ScopedAStatus& status) {
  return os << status.getDescription();
}

class ScopedAIBinder_DeathRecipient
    : public impl::ScopedAResource<AIBinder_DeathRecipient*, AIBinder_DeathRecipient_delete,
                                   nullptr> {
 public:
  explicit ScopedAIBinder_DeathRecipient(AIBinder_DeathRecipient* recipient = nullptr)
      : ScopedAResource(recipient) {}
};

class ScopedAIBinder_Weak
    : public impl::ScopedAResource<AIBinder_Weak*, AIBinder_Weak_delete, nullptr> {
 public:
  explicit ScopedAIBinder_Weak(AIBinder_Weak* weak = nullptr) : ScopedAResource(weak) {}
  SpAIBinder promote() const { return SpAIBinder(AIBinder_Weak_promote(get())); }
};

namespace impl {
inline void CloseDescriptor(int fd) {
  close(fd);
}
}  // namespace impl

class ScopedFileDescriptor : public impl::ScopedAResource<int, impl::CloseDescriptor, -1> {
 public:
  explicit ScopedFileDescriptor(int fd = -1) : ScopedAResource(fd) {}
};

}  // namespace ndk
