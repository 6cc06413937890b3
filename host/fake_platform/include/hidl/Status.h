// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: the outcome of a HIDL call.
//
// A failed Return aborts the process if it is destroyed or overwritten before its state was
// checked. Taking the value of a failed Return aborts, too.
#pragma once

#include <hidl/HidlSupport.h>
#include <utils/Errors.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>

namespace android::hardware {

class Status final {
 public:
  enum Exception : int32_t {
    EX_NONE = 0,
    EX_SECURITY = -1,
    EX_BAD_PARCELABLE = -2,
    EX_ILLEGAL_ARGUMENT = -3,
    EX_NULL_POINTER = -4,
    EX_ILLEGAL_STATE = -5,
    EX_NETWORK_MAIN_THREAD = -6,
    EX_UNSUPPORTED_OPERATION = -7,
    EX_TRANSACTION_FAILED = -129,
  };

  Status() = default;
  static Status ok() { return {}; }
  static Status fromExceptionCode(int32_t exception);
  static Status fromExceptionCode(int32_t exception, const char* message);
  static Status fromStatusT(status_t error);

  bool isOk() const { return exception_ == EX_NONE; }
  int32_t exceptionCode() const { return exception_; }
  const char* exceptionMessage() const { return message_.c_str(); }
  // OK unless the exception is EX_TRANSACTION_FAILED.
  status_t transactionError() const { return status_; }
  std::string description() const;

 private:
  int32_t exception_ = EX_NONE;
  status_t status_ = OK;
  std::string message_;
};

std::ostream& operator<<(std::ostream& os, const Status& status);

namespace details {

// Base of every Return: a status, and whether it has been checked.
class return_status {
 public:
  return_status() = default;
  explicit return_status(Status status) : status_(std::move(status)) {}
  // The duty to check moves to the new object.
  return_status(return_status&& other) noexcept { Take(other); }
  return_status& operator=(return_status&& other) noexcept;
  return_status(const return_status&) = delete;
  return_status& operator=(const return_status&) = delete;
  ~return_status() { AssertChecked(); }

  bool isOk() const {
    checked_ = true;
    return status_.isOk();
  }
  bool isOkUnchecked() const { return status_.isOk(); }
  // Counts as a check only if the result is true.
  bool isDeadObject() const;
  std::string description() const { return status_.description(); }
  void assertOk() const;

 private:
  // For the transport, which carries the status to the caller. Found by argument lookup only.
  friend const Status& StatusToCarry(const return_status& result) { return result.status_; }
  void Take(return_status& other);
  void AssertChecked() const;

  Status status_;
  mutable bool checked_ = false;
};

}  // namespace details

// NOLINTBEGIN(google-explicit-constructor): implicit on the platform, too
template <typename T>
class Return : public details::return_status {
 public:
  Return(T value) : value_(std::move(value)) {}
  Return(Status status) : return_status(std::move(status)) {}

  operator T() const {
    assertOk();
    return value_;
  }
  T withDefault(T value) const { return isOk() ? value_ : value; }

 private:
  T value_{};
};

template <typename T>
class Return<sp<T>> : public details::return_status {
 public:
  Return(T* value) : value_(value) {}
  template <typename U>
  Return(sp<U> value) : value_(std::move(value)) {}
  template <typename U>
  requires std::is_convertible_v<U*, T*> Return(U* value) : value_(value) {}
  Return(Status status) : return_status(std::move(status)) {}

  operator sp<T>() const {
    assertOk();
    return value_;
  }
  sp<T> withDefault(sp<T> value) const { return isOk() ? value_ : value; }

 private:
  sp<T> value_;
};

template <>
class Return<void> : public details::return_status {
 public:
  Return() = default;
  Return(Status status) : return_status(std::move(status)) {}
};
// NOLINTEND(google-explicit-constructor)

static inline Return<void> Void() {
  return {};
}

}  // namespace android::hardware
