// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the local side of IHealthInfoCallback.
#pragma once

#include <aidl/android/hardware/health/IHealthInfoCallback.h>

namespace aidl::android::hardware::health {

class BnHealthInfoCallback : public ndk::internal::GeneratedLocal<IHealthInfoCallback> {};

}  // namespace aidl::android::hardware::health
