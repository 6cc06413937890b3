// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The library in a program that loads and unloads it, as an audio service does with its modules.
#include <android/sensor.h>
#include <dlfcn.h>

#include "fixture.h"
#include "process_state.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel {
namespace {

using simulated::ThermalPath;

constexpr char kLibrary[] = QUORVEL_TEST_LIBRARY;
#define LOADED(function) Get(static_cast<decltype(&(function))>(nullptr), #function)

// The library from dlopen() to dlclose(), with one handle per family, each with a client that has
// been called. This program is not linked to the library.
class LoadedLibrary {
 public:
  LoadedLibrary() {
    if (library_ == nullptr) ADD_FAILURE() << dlerror();
    LOADED(InitBatteryInfo)(&battery_);
    LOADED(InitSensorInfo)(&sensors_);
    LOADED(InitThermalInfo)(&thermal_);
    EXPECT_EQ(LOADED(RegisterBatteryLevelCallback)(battery_, PutValue, &values_), 0);
    EXPECT_EQ(LOADED(RegisterProximitySensorCallback)(sensors_, 0, PutValue, &values_), 0);
    const ThermalCallbackParam skin = {
        .id = 0, .type_name = "SKIN", .temperature_name = "skin", .callback = PutValue};
    EXPECT_EQ(LOADED(RegisterThermalCallback)(thermal_, &skin, &values_), 0);
    EXPECT_EQ(values_.TakeMany(3).size(), 3u);
  }
  ~LoadedLibrary() {
    LOADED(DeinitThermalInfo)(&thermal_);
    LOADED(DeinitSensorInfo)(&sensors_);
    LOADED(DeinitBatteryInfo)(&battery_);
    dlclose(library_);
  }
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

 private:
  // Looks up the function with the name. The first argument only gives its type.
  template <typename Function>
  Function* Get(Function* /*type*/, const char* name) const {
    void* const address = dlsym(library_, name);
    EXPECT_NE(address, nullptr) << name;
    return reinterpret_cast<Function*>(address);
  }

  void* const library_ = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  Seen<int> values_;
  void* battery_ = nullptr;
  void* sensors_ = nullptr;
  void* thermal_ = nullptr;
};

class LoadingTest : public testing::Test {
 protected:
  LoadingTest() {
    health_.Start();
    hub_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    hub_.Start();
    thermal_.Declare(ThermalPath::kAidl);
    thermal_.Start(ThermalPath::kAidl);
  }

  simulated::Health health_;
  simulated::SensorHub hub_;
  simulated::Thermal thermal_;
};

TEST_F(LoadingTest, LoadingAndUnloadingLeavesNothingRunning) {
  int descriptors = 0;
  for (int round = 0; round < 100 && !HasFailure(); ++round) {
    {
      const LoadedLibrary library;
      EXPECT_GT(LibraryThreadCount(), 0);
    }
    EXPECT_TRUE(Eventually([] { return LibraryThreadCount() == 0; }));
    EXPECT_EQ(health_.callback_count(), 0U);
    EXPECT_EQ(hub_.queue_count(), 0U);
    EXPECT_EQ(thermal_.callback_count(ThermalPath::kAidl), 0U);
    if (round == 0) descriptors = Descriptors();
  }
  EXPECT_EQ(Descriptors(), descriptors);
}

TEST_F(LoadingTest, TheCodeStaysMappedForANotificationOnItsWay) {
  for (const Delivery kind : {Delivery::kOneway, Delivery::kDeathNotification}) {
    std::optional<HoldDeliveries> hold;
    {
      const LoadedLibrary library;
      hold.emplace(kind);
      if (kind == Delivery::kDeathNotification) {
        health_.Kill();
        thermal_.Kill(ThermalPath::kAidl);
      } else {
        health_.SetLevel(1);
        thermal_.SetSeverity("skin", aidl::android::hardware::thermal::ThrottlingSeverity::SEVERE);
      }
      ASSERT_TRUE(hold->WaitForHeld(2));
    }
    void* const mapped = dlopen(kLibrary, RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(mapped, nullptr);
    dlclose(mapped);
    hold->Release();
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }
}

}  // namespace
}  // namespace norvik::qel
