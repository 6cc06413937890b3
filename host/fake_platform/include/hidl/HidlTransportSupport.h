// Stand-in for the platform header of the same path: what concerns the transport of interfaces.
#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <utils/RefBase.h>

namespace android::hardware {

// Whether the two are the same object: two proxies when they lead to the same remote one, anything
// else when the pointers are equal.
bool interfacesEqual(const sp<::android::hidl::base::V1_0::IBase>& left,
                     const sp<::android::hidl::base::V1_0::IBase>& right);

}  // namespace android::hardware
