// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The static functions of HIDL interfaces.
#pragma once

#include <android/binder_auto_utils.h>
#include <utils/Errors.h>

#include <string>

#include "hidl_object.h"

namespace norvik::qel::fake {

// The calling process's reference to a service. Empty if there is none.
ndk::SpAIBinder TryGetHidl(const std::string& descriptor, const std::string& name, bool get_stub);
// Waits for a declared service.
ndk::SpAIBinder GetHidl(const std::string& descriptor, const std::string& name, bool get_stub);
// Registers a service under each of its interfaces.
::android::status_t AddHidl(const ::android::sp<HidlBase>& service, const std::string& name);

}  // namespace norvik::qel::fake
