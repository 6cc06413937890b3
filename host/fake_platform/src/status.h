// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The definition of AStatus.
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

// The name of a status or an exception. Empty for an unknown code.
std::string_view StatusName(binder_status_t status);
std::string_view ExceptionName(binder_exception_t exception);

// A copy that the caller owns. Used when a status crosses from one process to another.
AStatus* Clone(const AStatus* status);

}  // namespace norvik::qel::fake
