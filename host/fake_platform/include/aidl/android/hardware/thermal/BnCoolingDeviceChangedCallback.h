// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the local side of
// ICoolingDeviceChangedCallback.
#pragma once

#include <aidl/android/hardware/thermal/ICoolingDeviceChangedCallback.h>

namespace aidl::android::hardware::thermal {

class BnCoolingDeviceChangedCallback
    : public ndk::internal::GeneratedLocal<ICoolingDeviceChangedCallback> {};

}  // namespace aidl::android::hardware::thermal
