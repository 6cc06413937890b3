// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: sp, a strong reference to a RefBase.
#pragma once

#include <compare>
#include <cstddef>
#include <utility>

namespace android {

// NOLINTBEGIN(google-explicit-constructor): implicit on the platform, too
template <typename T>
class sp {
 public:
  constexpr sp() = default;
  constexpr sp(std::nullptr_t) {}
  sp(T* object) : object_(object) { Hold(); }
  sp(const sp& other) : object_(other.object_) { Hold(); }
  sp(sp&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <typename U>
  sp(U* object) : object_(object) {
    Hold();
  }
  template <typename U>
  sp(const sp<U>& other) : object_(other.get()) {
    Hold();
  }
  template <typename U>
  sp(sp<U>&& other) : object_(other.release()) {}
  ~sp() { clear(); }

  // Makes a new object with its first strong reference.
  template <typename... Args>
  static sp make(Args&&... args) {
    return sp(new T(std::forward<Args>(args)...));
  }
  // Another reference to an object that already has one.
  static sp fromExisting(T* object) { return sp(object); }
  template <typename U>
  static sp cast(const sp<U>& other) {
    return sp(static_cast<T*>(other.get()));
  }

  sp& operator=(sp other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  T* get() const { return object_; }
  T& operator*() const { return *object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  void clear() {
    T* old = std::exchange(object_, nullptr);
    if (old != nullptr) old->decStrong(this);
  }
  // Passes the reference to the caller without a decrement.
  T* release() { return std::exchange(object_, nullptr); }

 private:
  template <typename U>
  friend class wp;

  void Hold() {
    if (object_ != nullptr) object_->incStrong(this);
  }
  // Takes over a reference from a weak one, without an increment.
  void Adopt(T* object) { object_ = object; }

  T* object_ = nullptr;
};
// NOLINTEND(google-explicit-constructor)

template <typename T, typename U>
bool operator==(const sp<T>& left, const sp<U>& right) {
  return left.get() == right.get();
}
template <typename T, typename U>
bool operator==(const sp<T>& left, const U* right) {
  return left.get() == right;
}
template <typename T>
bool operator==(const sp<T>& left, std::nullptr_t) {
  return left.get() == nullptr;
}
template <typename T, typename U>
std::strong_ordering operator<=>(const sp<T>& left, const sp<U>& right) {
  return left.get() <=> right.get();
}
template <typename T, typename U>
std::strong_ordering operator<=>(const sp<T>& left, const U* right) {
  return left.get() <=> right;
}

}  // namespace android
