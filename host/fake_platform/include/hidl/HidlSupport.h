// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: the values that travel in HIDL calls.
#pragma once

#include <cutils/native_handle.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android::hidl::base::V1_0 {
struct IBase;
}  // namespace android::hidl::base::V1_0

namespace android::hardware {

// Called once, on a thread of the HIDL pool, when the process behind a proxy has died. The proxy
// holds the recipient weakly: the code that links it must keep it alive.
struct hidl_death_recipient : virtual RefBase {
  virtual void serviceDied(uint64_t cookie, const wp<::android::hidl::base::V1_0::IBase>& who) = 0;
};

// NOLINTBEGIN(google-explicit-constructor): implicit on the platform, too

// A native handle, owned or borrowed. Copying clones it.
struct hidl_handle {
  hidl_handle() = default;
  hidl_handle(const native_handle_t* handle) : handle_(handle) {}
  hidl_handle(const hidl_handle& other);
  hidl_handle(hidl_handle&& other) noexcept
      : handle_(std::exchange(other.handle_, nullptr)),
        owned_(std::exchange(other.owned_, false)) {}
  ~hidl_handle() { Free(); }

  hidl_handle& operator=(hidl_handle other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(owned_, other.owned_);
    return *this;
  }

  void setTo(native_handle_t* handle, bool shouldOwn = false);
  const native_handle_t* getNativeHandle() const { return handle_; }
  const native_handle_t* operator->() const { return handle_; }
  operator const native_handle_t*() const { return handle_; }

 private:
  void Free();

  const native_handle_t* handle_ = nullptr;
  bool owned_ = false;
};

// A text, owned or borrowed. A copy is owned.
struct hidl_string {
  hidl_string() = default;
  hidl_string(const char* text) : hidl_string(text, text != nullptr ? strlen(text) : 0) {}
  hidl_string(const char* text, size_t size);
  hidl_string(const std::string& text) : hidl_string(text.c_str(), text.size()) {}
  hidl_string(const hidl_string& other) : hidl_string(other.text_, other.size_) {}
  hidl_string(hidl_string&& other) noexcept
      : text_(std::exchange(other.text_, "")),
        size_(std::exchange(other.size_, 0)),
        owned_(std::exchange(other.owned_, false)) {}
  ~hidl_string() { clear(); }

  hidl_string& operator=(hidl_string other) noexcept {
    std::swap(text_, other.text_);
    std::swap(size_, other.size_);
    std::swap(owned_, other.owned_);
    return *this;
  }

  operator std::string() const { return {text_, size_}; }
  const char* c_str() const { return text_; }
  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  void clear();
  // Borrows `text`, which must end in a NUL.
  void setToExternal(const char* text, size_t size);

 private:
  const char* text_ = "";
  uint32_t size_ = 0;
  bool owned_ = false;
};

// Compares up to the first NUL of either text.
inline bool operator==(const hidl_string& left, const hidl_string& right) {
  return strcmp(left.c_str(), right.c_str()) == 0;
}
inline bool operator==(const hidl_string& left, const char* right) {
  return strcmp(left.c_str(), right) == 0;
}
inline std::strong_ordering operator<=>(const hidl_string& left, const hidl_string& right) {
  return strcmp(left.c_str(), right.c_str()) <=> 0;
}
inline std::strong_ordering operator<=>(const hidl_string& left, const char* right) {
  return strcmp(left.c_str(), right) <=> 0;
}

// Elements of one type, owned or borrowed. A copy is owned. A moved-from vector keeps its size and
// its pointer to the moved elements: it must not be read.
template <typename T>
struct hidl_vec {
  using value_type = T;
  using iterator = T*;
  using const_iterator = const T*;

  hidl_vec() = default;
  hidl_vec(size_t size) { resize(size); }
  hidl_vec(std::initializer_list<T> values) : hidl_vec(values.begin(), values.end()) {}
  hidl_vec(const std::vector<T>& values) : hidl_vec(values.begin(), values.end()) {}
  template <std::input_iterator Iterator>
  hidl_vec(Iterator first, Iterator last) {
    resize(static_cast<size_t>(std::distance(first, last)));
    std::copy(first, last, begin());
  }
  hidl_vec(const hidl_vec& other) : hidl_vec(other.begin(), other.end()) {}
  hidl_vec(hidl_vec&& other) noexcept { *this = std::move(other); }
  ~hidl_vec() { Free(); }

  hidl_vec& operator=(const hidl_vec& other) {
    if (this != &other) *this = hidl_vec(other);
    return *this;
  }
  hidl_vec& operator=(hidl_vec&& other) noexcept {
    if (this == &other) return *this;
    Free();
    values_ = other.values_;
    size_ = other.size_;
    owned_ = std::exchange(other.owned_, false);
    return *this;
  }
  hidl_vec& operator=(const std::vector<T>& values) { return *this = hidl_vec(values); }
  hidl_vec& operator=(std::initializer_list<T> values) { return *this = hidl_vec(values); }

  operator std::vector<T>() const { return std::vector<T>(begin(), end()); }

  size_t size() const { return size_; }
  T* data() { return values_; }
  const T* data() const { return values_; }
  T& operator[](size_t index) { return values_[index]; }
  const T& operator[](size_t index) const { return values_[index]; }
  iterator begin() { return values_; }
  iterator end() { return values_ + size_; }
  const_iterator begin() const { return values_; }
  const_iterator end() const { return values_ + size_; }
  iterator find(const T& value) { return std::find(begin(), end(), value); }
  const_iterator find(const T& value) const { return std::find(begin(), end(), value); }
  bool contains(const T& value) const { return find(value) != end(); }

  // Keeps the elements that fit.
  void resize(size_t size) {
    if (size > UINT32_MAX) std::abort();
    T* values = new T[size]();
    std::move(begin(), begin() + std::min<size_t>(size, size_), values);
    Free();
    setToExternal(values, size, /*shouldOwn=*/true);
  }
  // Borrows `values`, or takes ownership if they were made with new[].
  void setToExternal(T* values, size_t size, bool shouldOwn = false) {
    if (size > UINT32_MAX) std::abort();
    Free();
    values_ = values;
    size_ = static_cast<uint32_t>(size);
    owned_ = shouldOwn;
  }
  // The elements. The caller deletes them with delete[] if they were owned.
  T* releaseData() {
    if (!owned_ && values_ != nullptr) *this = hidl_vec(begin(), end());
    owned_ = false;
    size_ = 0;
    return std::exchange(values_, nullptr);
  }

  bool operator==(const hidl_vec& other) const {
    return std::equal(begin(), end(), other.begin(), other.end());
  }

 private:
  void Free() {
    if (std::exchange(owned_, false)) delete[] values_;
    values_ = nullptr;
  }

  T* values_ = nullptr;
  uint32_t size_ = 0;
  bool owned_ = false;
};

// A fixed number of elements. Default construction leaves them uninitialized.
template <typename T, size_t N>
struct hidl_array {
  hidl_array() = default;
  hidl_array(const T* values) { std::copy_n(values, N, values_); }
  hidl_array(const std::array<T, N>& values) : hidl_array(values.data()) {}
  hidl_array& operator=(const T* values) { return *this = hidl_array(values); }
  hidl_array& operator=(const std::array<T, N>& values) { return *this = hidl_array(values); }

  operator std::array<T, N>() const {
    std::array<T, N> values;
    std::copy_n(values_, N, values.begin());
    return values;
  }

  T* data() { return values_; }
  const T* data() const { return values_; }
  T& operator[](size_t index) { return values_[index]; }
  const T& operator[](size_t index) const { return values_[index]; }
  static constexpr size_t size() { return N; }
  static constexpr size_t elementCount() { return N; }

  bool operator==(const hidl_array& other) const {
    return std::equal(values_, values_ + N, other.values_);
  }

 private:
  T values_[N];
};

// NOLINTEND(google-explicit-constructor)

// For the namespaces of enums: combines the numbers of two values.
namespace details {
template <typename E>
requires std::is_enum_v<E>
constexpr std::underlying_type_t<E> operator|(E left, E right) {
  using Number = std::underlying_type_t<E>;
  return static_cast<Number>(left) | static_cast<Number>(right);
}
template <typename E>
requires std::is_enum_v<E>
constexpr std::underlying_type_t<E> operator&(E left, E right) {
  using Number = std::underlying_type_t<E>;
  return static_cast<Number>(left) & static_cast<Number>(right);
}
}  // namespace details

}  // namespace android::hardware
