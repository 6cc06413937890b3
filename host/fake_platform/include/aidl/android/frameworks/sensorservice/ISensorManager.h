// Stand-in for the generated header of the same path: the sensor service that the system registers
// some time after boot, version 1. Clients reach its sensors through <android/sensor.h>, which
// makes the calls; they need this for the name.
#pragma once

#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>

namespace aidl::android::frameworks::sensorservice {

class ISensorManager : public ndk::ICInterface {
 public:
  static const char* descriptor;
  static inline const int32_t version = 1;

  static std::shared_ptr<ISensorManager> fromBinder(const ndk::SpAIBinder& binder);
};

}  // namespace aidl::android::frameworks::sensorservice
