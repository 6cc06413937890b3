// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What holds for the handles of all families: they end at any moment and leave nothing behind, one
// serves many threads, and none waits for the service of another.
#include <malloc.h>
#include <sys/resource.h>

#include <array>
#include <cstdlib>
#include <deque>
#include <system_error>

#include "battery/battery_info.h"
#include "environment.h"
#include "process_state.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "thermal/thermal_info.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

using services::HealthOperation;

enum class Kind { kBattery, kSensors, kAidlThermal, kHidlThermal };

std::string KindName(const testing::TestParamInfo<Kind>& info) {
  return std::array{"Battery", "Sensors", "AidlThermal", "HidlThermal"}.at(
      static_cast<size_t>(info.param));
}

Family FamilyOf(Kind kind) {
  if (kind == Kind::kBattery) return kBattery;
  return kind == Kind::kSensors ? kSensors : kThermal;
}

// Two clients per handle: of the level and the cycle count, of the proximity and the hinge angle
// sensor, of the temperatures "skin" and "cpu".
int Add(Kind kind, void* handle, int client, void (*callback)(int, void*), void* cookie) {
  switch (kind) {
    case Kind::kBattery:
      return (client == 0 ? RegisterBatteryLevelCallback : RegisterBatteryCycleCountCallback)(
          handle, callback, cookie);
    case Kind::kSensors:
      return (client == 0 ? RegisterProximitySensorCallback : RegisterHingeAngleSensorCallback)(
          handle, 0, callback, cookie);
    default:
      return RegisterClient(handle, client, client == 0 ? "SKIN" : "CPU",
                            client == 0 ? "skin" : "cpu", callback, cookie);
  }
}

int Remove(Kind kind, void* handle, int client, void (*callback)(int, void*)) {
  switch (kind) {
    case Kind::kBattery:
      return (client == 0 ? DeregisterBatteryLevelCallback : DeregisterBatteryCycleCountCallback)(
          handle, callback);
    case Kind::kSensors:
      return (client == 0 ? DeregisterProximitySensorCallback : DeregisterHingeAngleSensorCallback)(
          handle, 0);
    default:
      return DeregisterThermalCallback(handle, client);
  }
}

// A phone with all services, of the two thermal ones the parameter's, and a handle.
class LifetimeTest : public HandleFixture, public testing::WithParamInterface<Kind> {
 protected:
  LifetimeTest() : HandleFixture(FamilyOf(GetParam())) {
    hub_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    hub_.Add(ASENSOR_TYPE_HINGE_ANGLE, "hinge angle");
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

  // Clients receive `value`, which is at most 6.
  void Report(int value, Kind kind = GetParam()) {
    if (kind == Kind::kBattery) {
      health_.Change([value](auto& info) { info.batteryLevel = info.batteryCycleCount = value; });
    } else if (kind == Kind::kSensors) {
      const auto reading = static_cast<float>(value);
      hub_.Report({{.type = ASENSOR_TYPE_PROXIMITY, .value = reading},
                   {.type = ASENSOR_TYPE_HINGE_ANGLE, .value = reading}});
    } else {
      for (const char* name : {"skin", "cpu"}) {
        thermal_.SetSeverity(name, static_cast<ThrottlingSeverity>(value));
      }
    }
  }
  void Kill() {
    if (GetParam() == Kind::kBattery) health_.Kill();
    if (GetParam() == thermal_kind()) thermal_.Kill(path());
  }
  void Start() {
    if (GetParam() == Kind::kBattery) health_.Start();
    if (GetParam() == thermal_kind()) thermal_.Start(path());
  }
  // The handles that have client 0 registered with the running service.
  size_t held() const {
    if (GetParam() == Kind::kBattery) return health_.callback_count();
    if (GetParam() == Kind::kSensors)
      return static_cast<size_t>(hub_.listeners(ASENSOR_TYPE_PROXIMITY));
    return thermal_.callback_count(path());
  }
  // A query that the service answers; false when it does not.
  static bool Query(void* handle) {
    if (GetParam() == Kind::kBattery) return GetBatteryLevel(handle, /*use_cached=*/false) >= 0;
    return GetParam() == Kind::kSensors || QuerySkin(handle) == 1;
  }
  fake::Script& query_script() {
    if (GetParam() == Kind::kBattery) return health_.on(HealthOperation::kGetHealthInfo);
    return path() == ThermalPath::kAidl
               ? thermal_.on(ThermalOperation::kGetTemperatures)
               : thermal_.on(HidlThermalOperation::kGetCurrentTemperatures);
  }
  void RegisterAndTake() {
    ASSERT_EQ(Add(GetParam(), handle_, 0, Client<0>, &seen_), 0);
    ASSERT_TRUE(seen_.Take());
  }
  // The object has gone when the notification of its service's death arrives.
  template <typename Object>
  void EndBeforeADeathNotification() {
    OverwrittenObject<Object> object;
    ASSERT_TRUE(object.get()->Initialize());
    ASSERT_EQ(Add(GetParam(), object.get(), 0, Client<0>, &seen_), 0);
    ASSERT_TRUE(seen_.Take());
    HoldDeliveries hold(Delivery::kDeathNotification);
    Kill();
    EXPECT_TRUE(hold.WaitForHeld());
    object.End();
    hold.Release();
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }
  // A handle's client is registered, called with what is reported, and deregistered.
  void ExpectWorks(Kind kind, void* handle) {
    Seen<Call> seen;
    EXPECT_EQ(Add(kind, handle, 0, Client<0>, &seen), 0);
    EXPECT_TRUE(seen.Take());
    report_ = report_ % 6 + 1;
    Report(report_, kind);
    EXPECT_TRUE(seen.TakeUntil({0, report_}));
    EXPECT_EQ(Remove(kind, handle, 0, Client<0>), 0);
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  const fake::ShortGetServiceWait short_wait_;  // for look-ups while the service is dead
  simulated::SensorHub hub_;
  simulated::Health health_;
  simulated::Thermal thermal_;
  int report_ = 0;
};
INSTANTIATE_TEST_SUITE_P(, LifetimeTest,
                         testing::Values(Kind::kBattery, Kind::kSensors, Kind::kAidlThermal,
                                         Kind::kHidlThermal),
                         KindName);

TEST_P(LifetimeTest, InitAndDeinitDoNotCallTheService) {
  const auto calls = [this] {
    int sum = 0;
    const auto add = [&sum]<typename Operation>(auto& phone, Operation end) {
      for (int i = 0; i < static_cast<int>(end); ++i) {
        sum += phone.on(static_cast<Operation>(i)).calls();
      }
    };
    add(health_, HealthOperation::kCount);
    add(hub_, SensorFunction::kCount);
    // A battery handle looks its service up when it ends.
    if (GetParam() != Kind::kBattery) add(hub_, BinderFunction::kCount);
    return sum;
  };
  const int before = calls();
  void* handle = nullptr;
  family_.init(&handle);
  ASSERT_NE(handle, nullptr);
  family_.deinit(&handle);
  EXPECT_EQ(handle, nullptr);
  family_.deinit(&handle);
  EXPECT_EQ(calls(), before);
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_P(LifetimeTest, HandlesAreCalledAndEndIndependently) {
  void* other = nullptr;
  family_.init(&other);
  Seen<Call> other_seen;
  RegisterAndTake();
  ASSERT_EQ(Add(GetParam(), other, 0, Client<0>, &other_seen), 0);
  ASSERT_TRUE(other_seen.Take());
  for (int value = 1; value <= 2; ++value) {
    Report(value);
    EXPECT_TRUE(seen_.TakeUntil({0, value}));
    EXPECT_TRUE(other_seen.TakeUntil({0, value}));
    if (!survives_deaths()) continue;
    Kill();
    Start();
    ASSERT_TRUE(Eventually([this] { return held() == 2; }));
  }
  EndsInTime([&] { family_.deinit(&other); });
  EXPECT_EQ(held(), 1u) << "a handle deregisters its clients when it ends";
  Report(3);
  EXPECT_TRUE(seen_.TakeUntil({0, 3}));
  EXPECT_TRUE(other_seen.empty());
}

TEST_P(LifetimeTest, AReportOnItsWayIsDroppedWhenTheHandleEnds) {
  RegisterAndTake();
  HoldDeliveries hold(Delivery::kOneway);
  Report(1);
  ASSERT_TRUE(hold.WaitForHeld());
  Deinit();
  hold.Release();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(seen_.empty());
}

TEST_P(LifetimeTest, ADeathNotificationOnItsWayLeavesTheNextHandleAlone) {
  if (!survives_deaths()) GTEST_SKIP() << "the sensor service does not come back";
  for (int round = 0; round < (kSanitized ? 20 : 100); ++round) {
    Report(1);
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
    ASSERT_TRUE(Query(handle_));  // a thermal handle that took its service for dead would recover
    ASSERT_THAT(Log(), IsEmpty()) << "nothing to recover";
    Report(2);
    ASSERT_EQ(seen_.Take(), (Call{0, 2}));
    ASSERT_EQ(held(), 1u) << "registered once, not twice";
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

TEST_P(LifetimeTest, NoClientIsCalledAfterDeinitHasReturned) {
  struct Cookie {
    std::atomic<bool> ended{false};
    Seen<int> values = {};
    static void OnValue(int value, void* cookie) {
      auto& self = *static_cast<Cookie*>(cookie);
      EXPECT_FALSE(self.ended) << "called after Deinit...()";
      self.values.Put(value);
    }
  };
  std::deque<Cookie> cookies;
  for (int round = 0; round < (kSanitized ? 100 : 500) && !HasFailure(); ++round) {
    Cookie& cookie = cookies.emplace_back();
    void* handle = nullptr;
    family_.init(&handle);
    ASSERT_EQ(Add(GetParam(), handle, 0, Cookie::OnValue, &cookie), 0);
    ASSERT_EQ(Add(GetParam(), handle, 1, Cookie::OnValue, &cookie), 0);
    if (round % 2 == 0) {
      ASSERT_TRUE(cookie.values.Take());
    }
    Background reports("reports", [&] {
      for (int value = 1; value <= 6; ++value) Report(value);
    });
    if (round % 3 == 0) {
      Kill();
      Start();
    }
    EndsInTime([&] { family_.deinit(&handle); });
    cookie.ended = true;
  }
}

// Clients of one handle and whole handles come and go, queries and dumps are made, the service
// reports, and dies where clients survive that.
TEST_P(LifetimeTest, OneHandleServesManyThreadsWhileOthersComeAndGo) {
  constexpr int kRounds = kSanitized ? 60 : 300;
  Seen<Call> others;
  RegisterAndTake();
  {
    std::deque<Background> threads;
    const auto in_turn = [&](auto action) {
      threads.emplace_back("one of many threads", [action] {
        for (int round = 0; round < kRounds; ++round) action(round);
      });
    };
    in_turn([&](int) {
      // A thermal registration may fail when the service dies during it.
      const bool sure = GetParam() < Kind::kAidlThermal;
      const int added = Add(GetParam(), handle_, 1, Client<1>, &others);
      const int removed = Remove(GetParam(), handle_, 1, Client<1>);
      EXPECT_TRUE(!sure || (added == 0 && removed == 0)) << added << " " << removed;
    });
    in_turn([&](int round) {
      void* handle = nullptr;
      family_.init(&handle);
      for (const int client : {0, 1}) {
        static_cast<void>(Add(GetParam(), handle, client, Client<1>, &others));
      }
      if (round % 2 == 0) static_cast<void>(Remove(GetParam(), handle, 0, Client<1>));
      EndsInTime([&] { family_.deinit(&handle); });
      log_.Clear();
    });
    in_turn([&](int) { static_cast<void>(Query(handle_)); });
    in_turn([&](int) { EXPECT_FALSE(Dump().empty()); });
    in_turn([&](int round) {
      Report(round % 6 + 1);
      if (round % 10 == 0) {
        Kill();
        Start();
      }
    });
    for (Background& thread : threads) thread.Join(std::chrono::minutes(5));
  }
  ASSERT_TRUE(fake::WaitUntilDelivered());
  // A client that left while the service was away is still registered, or waits to be.
  EXPECT_TRUE(Eventually([this] {
    static_cast<void>(Remove(GetParam(), handle_, 1, Client<1>));
    return held() == 1;
  }));
  Report(0);
  EXPECT_TRUE(seen_.TakeUntil({0, 0}));
  EXPECT_EQ(held(), 1u);
  Deinit();  // before the cookies are destroyed
}

TEST_P(LifetimeTest, HandlesAndClientsLeaveNothingBehind) {
  Deinit();
  const auto cycles = [this](int count) {
    for (int round = 0; round < count; ++round) {
      Init();
      for (int again = 0; again < 5; ++again) {
        for (const int client : {0, 1}) {
          ASSERT_EQ(Add(GetParam(), handle_, client, Client<0>, &seen_), 0);
        }
        ASSERT_EQ(Remove(GetParam(), handle_, 0, Client<0>), 0);
        if (again < 4) {
          ASSERT_EQ(Remove(GetParam(), handle_, 1, Client<0>), 0);
        }
      }
      Deinit();
      log_.Clear();  // the capture's own memory
      while (seen_.Take(std::chrono::milliseconds(0))) continue;
    }
    ASSERT_TRUE(fake::WaitUntilDelivered());
  };
  cycles(100);  // the allocator and its caches settle
  const int descriptors = Descriptors();
  const size_t allocated = mallinfo2().uordblks;
  const int rounds = kSanitized ? 50 : 500;
  cycles(rounds);
  EXPECT_EQ(held(), 0u);
  EXPECT_EQ(Descriptors(), descriptors);
  EXPECT_TRUE(Eventually([] { return LibraryThreadCount() == 0; }));
  if (!kSanitized) {  // a sanitizer's allocator is not counted
    EXPECT_LT(mallinfo2().uordblks, allocated + static_cast<size_t>(rounds) * 200);
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
    ExpectWorks(kind, other);
    FamilyOf(kind).deinit(&other);
  }
  Kill();
  query.Join();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  Start();
  ExpectWorks(GetParam(), handle_);
}

// Runs in a process of its own. The first worker finds room for its stack or not; in neither case
// may anything but the exception come of it.
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
