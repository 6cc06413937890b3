// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: functions of the HIDL transport.
#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <utils/RefBase.h>

namespace android::hardware {

// Whether both are the same object. Two proxies are equal if they refer to the same remote object,
// all others if the pointers are equal.
bool interfacesEqual(const sp<::android::hidl::base::V1_0::IBase>& left,
                     const sp<::android::hidl::base::V1_0::IBase>& right);

}  // namespace android::hardware
