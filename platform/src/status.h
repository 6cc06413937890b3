// What an AStatus is made of.
#pragma once

#include <android/binder_status.h>

#include <string>

struct AStatus {
  binder_exception_t exception = EX_NONE;
  int32_t service_specific = 0;
  binder_status_t status = STATUS_OK;
  std::string message = {};
};

namespace norvik::qel::standin {

// A status of the caller's own, equal to `status`: what crosses from one process to another.
AStatus* Clone(const AStatus* status);

}  // namespace norvik::qel::standin
