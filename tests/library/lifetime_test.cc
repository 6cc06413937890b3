// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Lifetime of handles in all families: a handle may end at any moment, and no handle waits for
// another family's service.
#include <sys/resource.h>

#include <array>
#include <cstdlib>
#include <system_error>

#include "battery/battery_info.h"
#include "environment.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "thermal/thermal_info.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

enum class Kind { kBattery, kSensors, kAidlThermal, kHidlThermal };

std::string KindName(const testing::TestParamInfo<Kind>& info) {
  return std::array{"Battery", "Sensors", "AidlThermal", "HidlThermal"}.at(
      static_cast<size_t>(info.param));
}

Family FamilyOf(Kind kind) {
  if (kind == Kind::kBattery) return kBattery;
  return kind == Kind::kSensors ? kSensors : kThermal;
}

// Registers a client of the battery level, the proximity sensor or the temperature "skin".
int Add(Kind kind, void* handle, void (*callback)(int, void*), void* cookie) {
  if (kind == Kind::kBattery) return RegisterBatteryLevelCallback(handle, callback, cookie);
  if (kind == Kind::kSensors) return RegisterProximitySensorCallback(handle, 0, callback, cookie);
  return RegisterClient(handle, 0, "SKIN", "skin", callback, cookie);
}

// A phone with all services and a handle. The parameter selects the thermal service.
class LifetimeTest : public HandleFixture, public testing::WithParamInterface<Kind> {
 protected:
  LifetimeTest() : HandleFixture(FamilyOf(GetParam())) {
    hub_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    hub_.Start();
    health_.Start();
    if (thermal_kind() == Kind::kHidlThermal) thermal_.Undeclare(ThermalPath::kAidl);
    thermal_.Declare(path());
    thermal_.Start(path());
    Init();
  }
  ~LifetimeTest() override {
    Deinit();
    health_.Kill();
    thermal_.Kill(path());
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  static Kind thermal_kind() {
    return GetParam() == Kind::kHidlThermal ? Kind::kHidlThermal : Kind::kAidlThermal;
  }
  static ThermalPath path() {
    return GetParam() == Kind::kHidlThermal ? ThermalPath::kHidl : ThermalPath::kAidl;
  }
  static bool survives_deaths() { return GetParam() != Kind::kSensors; }

  void Report() {
    if (GetParam() == Kind::kBattery) health_.SetLevel(1);
    if (GetParam() == Kind::kSensors) hub_.Report(ASENSOR_TYPE_PROXIMITY, 1);
    if (GetParam() == thermal_kind()) thermal_.SetSeverity("skin", ThrottlingSeverity::LIGHT);
  }
  void Kill() {
    if (GetParam() == Kind::kBattery) health_.Kill();
    if (GetParam() == thermal_kind()) thermal_.Kill(path());
  }
  void Start() {
    if (GetParam() == Kind::kBattery) health_.Start();
    if (GetParam() == thermal_kind()) thermal_.Start(path());
  }
  // Makes a query. Returns whether the service answered.
  static bool Query(void* handle) {
    if (GetParam() == Kind::kBattery) return GetBatteryLevel(handle, /*use_cached=*/false) >= 0;
    return GetParam() == Kind::kSensors || QuerySkin(handle) == 1;
  }
  fake::Script& query_script() {
    if (GetParam() == Kind::kBattery) return health_.on(services::HealthOperation::kGetHealthInfo);
    return path() == ThermalPath::kAidl
               ? thermal_.on(ThermalOperation::kGetTemperatures)
               : thermal_.on(HidlThermalOperation::kGetCurrentTemperatures);
  }
  void RegisterAndTake() { RegisterAndTake(GetParam(), handle_); }
  void RegisterAndTake(Kind kind, void* handle) {
    ASSERT_EQ(Add(kind, handle, Client<0>, &seen_), 0);
    ASSERT_TRUE(seen_.Take());
  }
  // Destroys an object before the death notification of its service arrives.
  template <typename Object>
  void EndBeforeADeathNotification() {
    OverwrittenObject<Object> object;
    ASSERT_TRUE(object.get()->Initialize());
    RegisterAndTake(GetParam(), object.get());
    HoldDeliveries hold(Delivery::kDeathNotification);
    Kill();
    EXPECT_TRUE(hold.WaitForHeld());
    object.End();
    hold.Release();
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  const fake::ShortGetServiceWait short_wait_;  // for look-ups while the service is dead
  simulated::SensorHub hub_;
  simulated::Health health_;
  simulated::Thermal thermal_;
};
INSTANTIATE_TEST_SUITE_P(, LifetimeTest,
                         testing::Values(Kind::kBattery, Kind::kSensors, Kind::kAidlThermal,
                                         Kind::kHidlThermal),
                         KindName);

TEST_P(LifetimeTest, AReportOnItsWayIsDroppedWhenTheHandleEnds) {
  RegisterAndTake();
  HoldDeliveries hold(Delivery::kOneway);
  Report();
  ASSERT_TRUE(hold.WaitForHeld());
  Deinit();
  hold.Release();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(seen_.empty());
}

TEST_P(LifetimeTest, ADeathNotificationOnItsWayLeavesTheNextHandleAlone) {
  if (!survives_deaths()) GTEST_SKIP() << "the sensor service does not come back";
  for (int round = 0; round < 20; ++round) {
    RegisterAndTake();
    HoldDeliveries hold(Delivery::kDeathNotification);
    Kill();
    ASSERT_TRUE(hold.WaitForHeld());
    Deinit();
    Start();
    Init();  // probably at the same address
    RegisterAndTake();
    log_.Clear();
    hold.Release();
    ASSERT_TRUE(fake::WaitUntilDelivered());
    ASSERT_TRUE(Query(handle_));  // a thermal handle whose link had been lost would recover here
    ASSERT_THAT(Log(), IsEmpty()) << "nothing to recover";
    Deinit();
    Init();
  }
}

TEST_P(LifetimeTest, ADeathNotificationOnItsWayUsesNoObjectThatHasGone) {
  if (!survives_deaths()) GTEST_SKIP() << "the sensor service does not come back";
  if (GetParam() == Kind::kBattery) {
    EndBeforeADeathNotification<audio::BatteryInfo>();
  } else {
    EndBeforeADeathNotification<audio::ThermalInfo>();
  }
}

TEST_P(LifetimeTest, AServiceThatNeverAnswersHoldsUpOneHandleUntilItDies) {
  if (GetParam() == Kind::kSensors) GTEST_SKIP() << "has no queries";
  const auto never = std::make_shared<Gate>();
  query_script().Then(Outcome::After(never));
  Background query("a query until the service dies", [this] { EXPECT_FALSE(Query(handle_)); });
  EXPECT_TRUE(never->WaitForArrivals());
  for (const Kind kind : {Kind::kBattery, Kind::kSensors, thermal_kind()}) {
    void* other = nullptr;
    FamilyOf(kind).init(&other);
    RegisterAndTake(kind, other);
    FamilyOf(kind).deinit(&other);
  }
  Kill();
  query.Join();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  Start();
  RegisterAndTake();
}

// Runs in a separate process without address space. Whether or not the first worker still gets a
// stack, the only effect must be the exception.
[[noreturn]] void InitWithoutRoom(const Family& family) {
  const rlimit no_room = {.rlim_cur = 1, .rlim_max = RLIM_INFINITY};
  setrlimit(RLIMIT_AS, &no_room);
  int untouched = 0;
  void* handle = &untouched;
  try {
    family.init(&handle);
  } catch (const std::system_error& error) {
    std::_Exit(
        handle == &untouched && error.code() == std::errc::resource_unavailable_try_again ? 0 : 1);
  }
  std::_Exit(2);
}

TEST(LifetimeDeathTest, AFailureToMakeAThreadReachesTheCaller) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers need the address space that this test takes away";
  if (kEmulated) GTEST_SKIP() << "the emulator does not limit the address space";
  for (const Family& family : {kBattery, kSensors, kThermal}) {
    SCOPED_TRACE(family.name);
    EXPECT_EXIT(InitWithoutRoom(family), testing::ExitedWithCode(0), "");
  }
}

}  // namespace
}  // namespace norvik::qel
