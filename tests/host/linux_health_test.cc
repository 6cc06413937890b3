// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The Linux machine's battery and chargers, on a fake sysfs made for each test.
#include "quorvel/linux_machine/health.h"

#include <aidl/android/hardware/health/BnHealthInfoCallback.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "clients.h"
#include "linux_machine.h"
#include "process_state.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/linux_machine/sensors.h"
#include "quorvel/linux_machine/thermal.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

using aidl::android::hardware::health::BatteryCapacityLevel;
using aidl::android::hardware::health::BatteryHealth;
using aidl::android::hardware::health::BatteryStatus;
using aidl::android::hardware::health::BnHealthInfoCallback;
using aidl::android::hardware::health::HealthInfo;
using aidl::android::hardware::health::IHealth;
using testing::ElementsAre;
using testing::IsEmpty;

const Files kGoodBattery = {
    {"type", "Battery\n"}, {"status", "Discharging\n"}, {"present", "1\n"},
    {"capacity", "73\n"},  {"cycle_count", "312\n"},
};

class LinuxHealthTest : public LinuxFixture {
 protected:
  LinuxHealthTest() : LinuxFixture("power_supply", "marker", "type") { InitBatteryInfo(&handle_); }
  ~LinuxHealthTest() override {
    DeinitBatteryInfo(&handle_);
    health_.Stop();
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  // Clients for all four properties, on a machine that knows them; their first calls are taken.
  void RegisterAll() {
    ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
    ASSERT_EQ(RegisterBatteryCycleCountCallback(handle_, PutValue, &cycles_), 0);
    ASSERT_EQ(RegisterWirelessChargerIsOnlineCallback(handle_, PutValue, &wireless_), 0);
    ASSERT_EQ(RegisterDockChargerIsOnlineCallback(handle_, PutValue, &dock_), 0);
  }
  int AskLevel() { return GetBatteryLevel(handle_, /*use_cached=*/false); }
  int CachedLevel() { return GetBatteryLevel(handle_, /*use_cached=*/true); }
  static std::shared_ptr<IHealth> Service() {
    return IHealth::fromBinder(
        ndk::SpAIBinder(AServiceManager_checkService(services::kHealthInstance)));
  }

  Seen<int> levels_, cycles_, wireless_, dock_;
  linux_machine::Health health_{notices_.observer()};
  void* handle_ = nullptr;
};

TEST_F(LinuxHealthTest, TheMachineIsServedInTheUnitsOfTheService) {
  machine_.Load(QUORVEL_TEST_MACHINES "/reference.umockdev");
  health_.Start();
  RegisterAll();
  EXPECT_EQ(levels_.Take(), 73);
  EXPECT_EQ(cycles_.Take(), 312);
  EXPECT_EQ(wireless_.Take(), 0);  // 0: online
  EXPECT_EQ(dock_.Take(), 1);      // 1: not online

  HealthInfo expected;
  expected.chargerAcOnline = true;
  expected.chargerWirelessOnline = true;
  expected.maxChargingCurrentMicroamps = 1100000;
  expected.maxChargingVoltageMicrovolts = 9000000;
  expected.batteryPresent = true;
  expected.batteryLevel = 73;
  expected.batteryCycleCount = 312;
  expected.batteryStatus = BatteryStatus::CHARGING;
  expected.batteryHealth = BatteryHealth::GOOD;
  expected.batteryCapacityLevel = BatteryCapacityLevel::NORMAL;
  expected.batteryTechnology = "Li-ion";
  expected.batteryVoltageMillivolts = 12345;
  expected.batteryTemperatureTenthsCelsius = -52;
  expected.batteryCurrentMicroamps = -1500000;
  expected.batteryCurrentAverageMicroamps = -1400000;
  expected.batteryFullChargeUah = 4500000;
  expected.batteryFullChargeDesignCapacityUah = 5000000;
  expected.batteryChargeCounterUah = 3240000;
  expected.batteryChargeTimeToFullNowSeconds = 5400;
  EXPECT_EQ(health_.info(), expected) << health_.info().toString();
  EXPECT_THAT(Notices(), IsEmpty());
}

TEST_F(LinuxHealthTest, AnnouncedChangesReachClients) {
  machine_.Add("BAT0", kGoodBattery);
  machine_.Add("pad", {{"type", "Wireless\n"}, {"online", "1\n"}});
  machine_.Add("Pogo-Dock", {{"type", "Mains\n"}, {"online", "1\n"}});
  health_.Start();
  RegisterAll();
  ASSERT_EQ(levels_.Take(), 73);
  ASSERT_EQ(cycles_.Take(), 312);
  ASSERT_EQ(wireless_.Take(), 0);
  ASSERT_EQ(dock_.Take(), 0);
  EXPECT_FALSE(health_.info().chargerAcOnline) << "a dock is not an AC charger, too";

  for (const int level : {72, 71}) {
    machine_.Change("BAT0", "capacity", std::to_string(level));
    EXPECT_EQ(levels_.Take(), level);
  }
  machine_.Change("BAT0", "cycle_count", "313\n");
  EXPECT_EQ(cycles_.Take(), 313);
  machine_.Change("pad", "online", "0\n");
  EXPECT_EQ(wireless_.Take(), 1);
  machine_.Remove("Pogo-Dock");
  EXPECT_EQ(dock_.Take(), 1);
  machine_.Add("cradle", {{"type", "Dock\n"}, {"online", "1\n"}});
  EXPECT_EQ(dock_.Take(), 0);
}

class ReportListener : public BnHealthInfoCallback {
 public:
  ndk::ScopedAStatus healthInfoChanged(const HealthInfo& info) override {
    levels.Put(info.batteryLevel);
    return ndk::ScopedAStatus::ok();
  }
  Seen<int> levels;
};

TEST_F(LinuxHealthTest, AnEventWithoutAChangeIsNotReported) {
  machine_.Add("BAT0", kGoodBattery);
  health_.Start();
  const auto listener = ndk::SharedRefBase::make<ReportListener>();
  const auto service = Service();
  ASSERT_NE(service, nullptr);
  ASSERT_TRUE(service->registerCallback(listener).isOk());
  ASSERT_EQ(listener->levels.Take(), 73);
  machine_.Announce("BAT0");
  EXPECT_THAT(Notices(), IsEmpty());  // the event has been handled by now
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(listener->levels.empty());
  machine_.Change("BAT0", "capacity", "72\n");
  EXPECT_EQ(listener->levels.Take(), 72);
}

TEST_F(LinuxHealthTest, AQuestionReadsWhatTheDriverHasNotAnnounced) {
  machine_.Add("BAT0", kGoodBattery);
  health_.Start();
  ASSERT_EQ(AskLevel(), 73);
  machine_.Set("BAT0", "capacity", "64\n");
  EXPECT_EQ(AskLevel(), 64);

  // So do its faults.
  machine_.Set("BAT0", "capacity", "\n");
  EXPECT_EQ(AskLevel(), -1);
  EXPECT_EQ(notices_.Next(), "BAT0/capacity: empty") << "without an event";
}

TEST_F(LinuxHealthTest, UnannouncedChangesAreFoundWhileAClientListens) {
  machine_.Add("BAT0", kGoodBattery);
  linux_machine::Health health(nullptr, {.period = std::chrono::milliseconds(2)});
  health.Start();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
  ASSERT_EQ(levels_.Take(), 73);
  machine_.Set("BAT0", "capacity", "64\n");
  EXPECT_EQ(levels_.Take(), 64);
  health.Stop();
}

// How often the threads of that name have gone to sleep so far. Empty if there is no such thread.
std::optional<int64_t> SleepsOf(const std::string& name) {
  std::optional<int64_t> sleeps;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string word;
    std::ifstream(task.path() / "comm") >> word;
    if (word != name) continue;
    std::ifstream status(task.path() / "status");
    while (status >> word && word != "voluntary_ctxt_switches:") continue;
    int64_t count = 0;
    if (status >> count) sleeps = sleeps.value_or(0) + count;
  }
  return sleeps;
}

TEST_F(LinuxHealthTest, NoThreadOfAServiceWakesUpWhileNoClientListens) {
  static constexpr auto kPeriod = std::chrono::milliseconds(2);
  machine_.Add("BAT0", kGoodBattery);
  machine_.AddTo("thermal", "thermal_zone0", {{"type", "cpu\n"}, {"temp", "30000\n"}});
  machine_.AddTo(
      "iio", "iio:device0",
      {{"name", "tof\n"}, {"in_proximity_raw", "9\n"}, {"in_proximity_scale", "0.01\n"}});
  linux_machine::Health health(nullptr, {.period = kPeriod});
  linux_machine::Thermal thermal(nullptr, {.types_file = "", .period = kPeriod});
  linux_machine::Sensors sensors(nullptr, {.period = kPeriod});
  health.Start();
  thermal.Start();
  sensors.Start();
  // A client that has come and gone leaves no timer behind.
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
  ASSERT_EQ(levels_.Take(), 73);
  DeinitBatteryInfo(&handle_);
  ASSERT_EQ(health.callback_count(), 0u);

  const auto many_periods = [] {
    const auto end = std::chrono::steady_clock::now() + 25 * kPeriod;
    return Eventually([&] { return std::chrono::steady_clock::now() >= end; });
  };
  ASSERT_TRUE(many_periods());  // in which the service notices that the client has left
  const std::vector<std::string> threads = {"power_supply", "thermal", "iio"};
  std::vector<std::optional<int64_t>> before;
  for (const std::string& thread : threads) {
    before.push_back(SleepsOf(thread));
    EXPECT_TRUE(before.back()) << thread;
  }
  ASSERT_TRUE(many_periods());
  for (size_t i = 0; i < threads.size(); ++i) EXPECT_EQ(SleepsOf(threads[i]), before[i]);
  sensors.Stop();
  thermal.Stop();
  health.Stop();
}

TEST_F(LinuxHealthTest, ABatteryComesAndGoes) {
  health_.Start();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no battery"));

  for (const char* const level : {"40", "50"}) {
    machine_.Add("BAT0", With(kGoodBattery, {{"capacity", level}, {"cycle_count", "0\n"}}));
    ASSERT_TRUE(Eventually([&] { return CachedLevel() == std::stoi(level); }));
    EXPECT_TRUE(health_.info().batteryPresent);
    machine_.Remove("BAT0");
    ASSERT_TRUE(Eventually([&] { return CachedLevel() == -1; }));
    EXPECT_FALSE(health_.info().batteryPresent);
    // A battery that comes back is a new one: its fault is reported again.
    EXPECT_THAT(Notices(), ElementsAre("BAT0/cycle_count: 0 means not available",
                                       "this machine has no battery"));
  }
}

TEST_F(LinuxHealthTest, ASupplyAnnouncedAsGoneIsNotReadFromItsLeftovers) {
  machine_.Add("BAT0", kGoodBattery);
  health_.Start();
  RegisterAll();
  ASSERT_EQ(levels_.Take(), 73);
  machine_.Announce("BAT0", "remove");
  ASSERT_TRUE(Eventually([&] { return CachedLevel() == -1; }));
  machine_.Vanish("BAT0");
  EXPECT_EQ(AskLevel(), -1);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no battery"));
}

TEST_F(LinuxHealthTest, ASupplyIsNotReadBeforeItIsAnnounced) {
  machine_.Add("BAT0", With(kGoodBattery, {{"capacity", "\n"}}));
  machine_.Add("BAT1", kGoodBattery);
  machine_.Unlist("BAT0");
  health_.Start();
  machine_.List("BAT0");  // as a driver that is still creating its files
  EXPECT_EQ(AskLevel(), 73);
  machine_.Set("BAT0", "capacity", "20\n");
  machine_.Announce("BAT0", "add");
  EXPECT_TRUE(Eventually([&] { return AskLevel() == 47; }));
  EXPECT_THAT(Notices(),
              ElementsAre("battery level: BAT0 (50 %) and BAT1 (50 %) together, as the mean"));
}

TEST_F(LinuxHealthTest, UnknownValuesAreRefused) {
  machine_.Add("BAT0", With(kGoodBattery, {{"capacity", "\n"}, {"current_now", "-250\n"}}));
  health_.Start();
  const auto service = Service();
  ASSERT_NE(service, nullptr);
  int32_t value = 0;
  EXPECT_EQ(service->getCapacity(&value).getExceptionCode(), EX_UNSUPPORTED_OPERATION);
  EXPECT_EQ(service->getChargeCounterUah(&value).getExceptionCode(), EX_UNSUPPORTED_OPERATION);
  EXPECT_TRUE(service->getCurrentNowMicroamps(&value).isOk());
  EXPECT_EQ(value, -250);
}

TEST_F(LinuxHealthTest, ClientsOutliveAStopAndAreCalledAfterTheNextStart) {
  machine_.Add("BAT0", kGoodBattery);
  health_.Start();
  RegisterAll();
  ASSERT_EQ(levels_.Take(), 73);
  EXPECT_TRUE(AServiceManager_isDeclared(services::kHealthInstance));

  health_.Stop();
  EXPECT_FALSE(AServiceManager_isDeclared(services::kHealthInstance));
  EXPECT_EQ(AskLevel(), -EAGAIN);
  machine_.Change("BAT0", "capacity", "60\n");  // while no service runs

  health_.Start();
  EXPECT_EQ(levels_.Take(), 60);
}

TEST_F(LinuxHealthTest, StoppingLeavesNothingOpen) {
  constexpr int kRounds = 20;
  machine_.Add("BAT0", kGoodBattery);
  const int before = Descriptors();
  for (int i = 0; i < kRounds; ++i) {
    health_.Start();
    void* handle = nullptr;
    InitBatteryInfo(&handle);
    EXPECT_EQ(GetBatteryLevel(handle, /*use_cached=*/false), 73);
    DeinitBatteryInfo(&handle);
    health_.Stop();
  }
  // umockdev may have opened a few of its own meanwhile.
  EXPECT_LT(Descriptors(), before + kRounds);
}

TEST_F(LinuxHealthTest, TheLastStateWinsWhileSuppliesComeAndGoAndManyThreadsAsk) {
  machine_.Add("BAT0", kGoodBattery);
  health_.Start();
  RegisterAll();
  const auto has = [&](int level, BatteryStatus status) {
    const auto is_so = [&] {
      const HealthInfo info = health_.info();
      return info.batteryLevel == level && info.batteryStatus == status;
    };
    return EventuallyWhileAsked(is_so, [&] {
      const int asked = AskLevel();
      EXPECT_TRUE(asked == 73 || asked == 42) << asked;
    });
  };
  const auto spare = With(kGoodBattery, {{"capacity", "10\n"}, {"status", "Full\n"}});
  for (int i = 0; i < 20; ++i) {
    const bool charges = i % 2 == 0;
    machine_.Add("A_spare", spare);
    // The mean of 73 and 10.
    EXPECT_TRUE(has(42, charges ? BatteryStatus::DISCHARGING : BatteryStatus::CHARGING));
    machine_.Change("BAT0", "status", charges ? "Charging\n" : "Discharging\n");
    machine_.Remove("A_spare");
    EXPECT_TRUE(has(73, charges ? BatteryStatus::CHARGING : BatteryStatus::DISCHARGING));
  }
  AskLevel();  // has the machine read once more
  // Reports of earlier states may still be on their way, in order; the last one tells the end.
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(CachedLevel(), 73);
  EXPECT_EQ(AskLevel(), 73);
  EXPECT_EQ(health_.info().batteryStatus, BatteryStatus::DISCHARGING);
}

}  // namespace
}  // namespace norvik::qel
