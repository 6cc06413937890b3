// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/log.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include "status.h"

namespace android::hardware {

namespace fake = ::norvik::qel::fake;

namespace {

const native_handle_t* CloneOf(const native_handle_t* handle) {
  if (handle == nullptr) return nullptr;
  const native_handle_t* clone = native_handle_clone(handle);
  if (clone == nullptr) {
    __android_log_assert(nullptr, "HidlSupport", "a native handle cannot be cloned");
  }
  return clone;
}

}  // namespace

hidl_handle::hidl_handle(const hidl_handle& other)
    : handle_(CloneOf(other.handle_)), owned_(other.handle_ != nullptr) {}

void hidl_handle::setTo(native_handle_t* handle, bool shouldOwn) {
  Free();
  handle_ = handle;
  owned_ = shouldOwn;
}

void hidl_handle::Free() {
  if (owned_ && handle_ != nullptr) {
    native_handle_close(handle_);
    native_handle_delete(const_cast<native_handle_t*>(handle_));
  }
  handle_ = nullptr;
  owned_ = false;
}

hidl_string::hidl_string(const char* text, size_t size) {
  if (text == nullptr || size == 0) return;
  if (size >= UINT32_MAX) std::abort();
  char* copy = new char[size + 1];
  memcpy(copy, text, size);
  copy[size] = '\0';
  text_ = copy;
  size_ = static_cast<uint32_t>(size);
  owned_ = true;
}

void hidl_string::clear() {
  if (std::exchange(owned_, false)) delete[] text_;
  text_ = "";
  size_ = 0;
}

void hidl_string::setToExternal(const char* text, size_t size) {
  if (size > UINT32_MAX) std::abort();
  clear();
  if (text == nullptr) return;  // c_str() is never null
  text_ = text;
  size_ = static_cast<uint32_t>(size);
}

Status Status::fromExceptionCode(int32_t exception) {
  return fromExceptionCode(exception, "");
}

Status Status::fromExceptionCode(int32_t exception, const char* message) {
  Status status;
  status.exception_ = exception;
  if (exception == EX_TRANSACTION_FAILED) status.status_ = FAILED_TRANSACTION;
  status.message_ = message;
  return status;
}

Status Status::fromStatusT(status_t error) {
  if (error == OK) return {};
  Status status;
  status.exception_ = EX_TRANSACTION_FAILED;
  status.status_ = error;
  return status;
}

std::string Status::description() const {
  if (isOk()) return "No error";
  const auto name_or_number = [](std::string_view name, int32_t number) {
    return name.empty() ? std::to_string(number) : std::string(name);
  };
  std::string text =
      "Status(" + name_or_number(fake::ExceptionName(exception_), exception_) + "): '";
  if (exception_ == EX_TRANSACTION_FAILED) {
    text += name_or_number(fake::StatusName(status_), status_) + ": ";
  }
  return text + message_ + "'";
}

std::ostream& operator<<(std::ostream& os, const Status& status) {
  return os << status.description();
}

namespace details {

namespace {
constexpr char kTag[] = "HidlStatus";
}  // namespace

return_status& return_status::operator=(return_status&& other) noexcept {
  if (this == &other) return *this;
  AssertChecked();
  Take(other);
  return *this;
}

bool return_status::isDeadObject() const {
  const bool dead = status_.transactionError() == DEAD_OBJECT;
  if (dead) checked_ = true;
  return dead;
}

void return_status::assertOk() const {
  if (isOk()) return;
  __android_log_assert(nullptr, kTag, "a failed Return is used as if it were ok: %s",
                       description().c_str());
}

void return_status::Take(return_status& other) {
  status_ = std::move(other.status_);
  checked_ = std::exchange(other.checked_, true);
}

void return_status::AssertChecked() const {
  if (checked_ || status_.isOk()) return;
  __android_log_assert(nullptr, kTag, "a failed Return goes away unchecked: %s",
                       description().c_str());
}

}  // namespace details

}  // namespace android::hardware
