// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the local side of IThermalChangedCallback.
#pragma once

#include <aidl/android/hardware/thermal/IThermalChangedCallback.h>

namespace aidl::android::hardware::thermal {

class BnThermalChangedCallback : public ndk::internal::GeneratedLocal<IThermalChangedCallback> {};

}  // namespace aidl::android::hardware::thermal
