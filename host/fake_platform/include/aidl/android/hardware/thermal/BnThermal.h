// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the local side of IThermal.
#pragma once

#include <aidl/android/hardware/thermal/IThermal.h>

namespace aidl::android::hardware::thermal {

class BnThermal : public ndk::internal::GeneratedLocal<IThermal> {};

}  // namespace aidl::android::hardware::thermal
