// What an AStatus is made of.
#pragma once

#include <android/binder_status.h>

#include <string>
#include <string_view>

struct AStatus {
  binder_exception_t exception = EX_NONE;
  int32_t service_specific = 0;
  binder_status_t status = STATUS_OK;
  std::string message = {};
};

namespace norvik::qel::fake {

// The name of a status or an exception; empty for one that the platform does not know.
std::string_view StatusName(binder_status_t status);
std::string_view ExceptionName(binder_exception_t exception);

// A status of the caller's own, equal to `status`: what crosses from one process to another.
AStatus* Clone(const AStatus* status);

}  // namespace norvik::qel::fake
