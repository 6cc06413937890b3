// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: objects that count their references.
#pragma once

#include <utils/StrongPointer.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace android {

// An object that is deleted with its last strong reference (sp), even if weak references (wp)
// exist. Destroying it in any other way while strong references are left aborts.
class RefBase {
 public:
  // The counts. They outlive the object for its weak references.
  class weakref_type;

  RefBase(const RefBase&) = delete;
  RefBase& operator=(const RefBase&) = delete;

  void incStrong(const void* id) const;
  void decStrong(const void* id) const;
  int32_t getStrongCount() const;

  // For wp.
  weakref_type* createWeak() const;
  static void CopyWeak(weakref_type* weak);
  static void DropWeak(weakref_type* weak);
  // Takes a strong reference; false if the object is gone.
  static bool AttemptIncStrong(weakref_type* weak);

 protected:
  RefBase();
  virtual ~RefBase();

  // Called with the first strong reference; and after the last one, before the object is deleted.
  virtual void onFirstRef();
  virtual void onLastStrongRef(const void* id);

 private:
  weakref_type* const counts_;
};

// NOLINTBEGIN(google-explicit-constructor): implicit on the platform, too
template <typename T>
class wp {
 public:
  constexpr wp() = default;
  constexpr wp(std::nullptr_t) {}
  wp(T* object) : object_(object), weak_(object != nullptr ? object->createWeak() : nullptr) {}
  wp(const sp<T>& object) : wp(object.get()) {}
  wp(const wp& other) : object_(other.object_), weak_(other.weak_) { RefBase::CopyWeak(weak_); }
  wp(wp&& other) noexcept
      : object_(std::exchange(other.object_, nullptr)),
        weak_(std::exchange(other.weak_, nullptr)) {}
  template <typename U>
  wp(U* object) : wp(static_cast<T*>(object)) {}
  template <typename U>
  wp(const sp<U>& object) : wp(static_cast<T*>(object.get())) {}
  template <typename U>
  wp(const wp<U>& other) : object_(other.object_), weak_(other.weak_) {
    RefBase::CopyWeak(weak_);
  }
  ~wp() { clear(); }

  wp& operator=(wp other) noexcept {
    std::swap(object_, other.object_);
    std::swap(weak_, other.weak_);
    return *this;
  }

  // Null if the object is gone or there was none.
  sp<T> promote() const {
    sp<T> object;
    if (weak_ != nullptr && RefBase::AttemptIncStrong(weak_)) object.Adopt(object_);
    return object;
  }
  void clear() {
    RefBase::DropWeak(std::exchange(weak_, nullptr));
    object_ = nullptr;
  }
  // For comparison only: the object may be gone.
  T* unsafe_get() const { return object_; }

  // Compares the counts, too: a new object may reuse the address of a deleted one.
  template <typename U>
  bool operator==(const wp<U>& other) const {
    return weak_ == other.weak_ && object_ == other.object_;
  }
  template <typename U>
  bool operator==(const sp<U>& other) const {
    return object_ == other.get();
  }
  template <typename U>
  bool operator==(const U* other) const {
    return object_ == other;
  }
  bool operator==(std::nullptr_t) const { return object_ == nullptr; }
  template <typename U>
  std::strong_ordering operator<=>(const wp<U>& other) const {
    return weak_ <=> other.weak_;
  }

 private:
  template <typename U>
  friend class wp;

  T* object_ = nullptr;
  RefBase::weakref_type* weak_ = nullptr;
};
// NOLINTEND(google-explicit-constructor)

}  // namespace android
