// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the local side of IHealth.
#pragma once

#include <aidl/android/hardware/health/IHealth.h>

namespace aidl::android::hardware::health {

class BnHealth : public ndk::internal::GeneratedLocal<IHealth> {};

}  // namespace aidl::android::hardware::health
