// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "status.h"

#include <android/binder_status.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace std::string_view_literals;

constexpr std::array kStatusNames = {
    std::pair{STATUS_OK, "OK"sv},
    std::pair{STATUS_UNKNOWN_ERROR, "UNKNOWN_ERROR"sv},
    std::pair{STATUS_NO_MEMORY, "NO_MEMORY"sv},
    std::pair{STATUS_INVALID_OPERATION, "INVALID_OPERATION"sv},
    std::pair{STATUS_BAD_VALUE, "BAD_VALUE"sv},
    std::pair{STATUS_BAD_TYPE, "BAD_TYPE"sv},
    std::pair{STATUS_NAME_NOT_FOUND, "NAME_NOT_FOUND"sv},
    std::pair{STATUS_PERMISSION_DENIED, "PERMISSION_DENIED"sv},
    std::pair{STATUS_NO_INIT, "NO_INIT"sv},
    std::pair{STATUS_ALREADY_EXISTS, "ALREADY_EXISTS"sv},
    std::pair{STATUS_DEAD_OBJECT, "DEAD_OBJECT"sv},
    std::pair{STATUS_FAILED_TRANSACTION, "FAILED_TRANSACTION"sv},
    std::pair{STATUS_BAD_INDEX, "BAD_INDEX"sv},
    std::pair{STATUS_NOT_ENOUGH_DATA, "NOT_ENOUGH_DATA"sv},
    std::pair{STATUS_WOULD_BLOCK, "WOULD_BLOCK"sv},
    std::pair{STATUS_TIMED_OUT, "TIMED_OUT"sv},
    std::pair{STATUS_UNKNOWN_TRANSACTION, "UNKNOWN_TRANSACTION"sv},
    std::pair{STATUS_FDS_NOT_ALLOWED, "FDS_NOT_ALLOWED"sv},
    std::pair{STATUS_UNEXPECTED_NULL, "UNEXPECTED_NULL"sv},
};

constexpr std::array kExceptionNames = {
    std::pair{EX_NONE, "EX_NONE"sv},
    std::pair{EX_SECURITY, "EX_SECURITY"sv},
    std::pair{EX_BAD_PARCELABLE, "EX_BAD_PARCELABLE"sv},
    std::pair{EX_ILLEGAL_ARGUMENT, "EX_ILLEGAL_ARGUMENT"sv},
    std::pair{EX_NULL_POINTER, "EX_NULL_POINTER"sv},
    std::pair{EX_ILLEGAL_STATE, "EX_ILLEGAL_STATE"sv},
    std::pair{EX_NETWORK_MAIN_THREAD, "EX_NETWORK_MAIN_THREAD"sv},
    std::pair{EX_UNSUPPORTED_OPERATION, "EX_UNSUPPORTED_OPERATION"sv},
    std::pair{EX_SERVICE_SPECIFIC, "EX_SERVICE_SPECIFIC"sv},
    std::pair{EX_PARCELABLE, "EX_PARCELABLE"sv},
    std::pair{EX_TRANSACTION_FAILED, "EX_TRANSACTION_FAILED"sv},
};

// The name of `code`. Empty for an unknown code.
template <typename Table>
std::string_view Name(const Table& table, int32_t code) {
  const auto* found = std::find_if(table.begin(), table.end(),
                                   [code](const auto& row) { return row.first == code; });
  return found != table.end() ? found->second : std::string_view();
}

AStatus* FromException(binder_exception_t exception, const char* message) {
  if (exception == EX_NONE) return AStatus_newOk();
  if (Name(kExceptionNames, exception).empty()) exception = EX_TRANSACTION_FAILED;
  auto* status = new AStatus{.exception = exception, .message = message};
  if (exception == EX_TRANSACTION_FAILED) status->status = STATUS_FAILED_TRANSACTION;
  return status;
}

}  // namespace

namespace norvik::qel::fake {

std::string_view StatusName(binder_status_t status) {
  return Name(kStatusNames, status);
}

std::string_view ExceptionName(binder_exception_t exception) {
  return Name(kExceptionNames, exception);
}

AStatus* Clone(const AStatus* status) {
  return AStatus_isOk(status) ? AStatus_newOk() : new AStatus(*status);
}

}  // namespace norvik::qel::fake

extern "C" {

AStatus* AStatus_newOk() {
  static AStatus& ok =
      *new AStatus;  // leaked on purpose: callers may hold it until the process ends
  return &ok;
}

AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
  return FromException(exception, "");
}

AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
  return FromException(exception, message);
}

AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific) {
  return AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, "");
}

AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
  return new AStatus{
      .exception = EX_SERVICE_SPECIFIC, .service_specific = serviceSpecific, .message = message};
}

AStatus* AStatus_fromStatus(binder_status_t status) {
  if (status == STATUS_OK) return AStatus_newOk();
  if (Name(kStatusNames, status).empty()) status = STATUS_UNKNOWN_ERROR;
  return new AStatus{.exception = EX_TRANSACTION_FAILED, .status = status, .message = ""};
}

bool AStatus_isOk(const AStatus* status) {
  return status->exception == EX_NONE;
}

binder_exception_t AStatus_getExceptionCode(const AStatus* status) {
  return status->exception;
}

int32_t AStatus_getServiceSpecificError(const AStatus* status) {
  return status->service_specific;
}

binder_status_t AStatus_getStatus(const AStatus* status) {
  return status->status;
}

const char* AStatus_getMessage(const AStatus* status) {
  return status->message.c_str();
}

const char* AStatus_getDescription(const AStatus* status) {
  std::string text = "No error";
  if (!AStatus_isOk(status)) {
    text = "Status(" + std::to_string(status->exception) + ", " +
           std::string(Name(kExceptionNames, status->exception)) + "): '";
    if (status->exception == EX_SERVICE_SPECIFIC) {
      text += std::to_string(status->service_specific) + ": ";
    } else if (status->exception == EX_TRANSACTION_FAILED) {
      text += std::string(Name(kStatusNames, status->status)) + ": ";
    }
    text += status->message + "'";
  }
  char* description = new char[text.size() + 1];
  memcpy(description, text.c_str(), text.size() + 1);
  return description;
}

void AStatus_deleteDescription(const char* description) {
  delete[] description;
}

void AStatus_delete(AStatus* status) {
  if (status != AStatus_newOk()) delete status;
}

}  // extern "C"
