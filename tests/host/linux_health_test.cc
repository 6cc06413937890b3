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
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "clients.h"
#include "device_files.h"
#include "linux_machine.h"
#include "power_supplies.h"
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

class LinuxHealthTest : public testing::Test {
 protected:
  void SetUp() override {
    machine_ = std::make_unique<Machine>("power_supply");
    // Of a real machine's directories only those exist that hold a device.
    ASSERT_FALSE(std::filesystem::exists("/sys/kernel")) << "run this under umockdev-wrapper";
    InitBatteryInfo(&handle_);
  }
  void TearDown() override {
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

  // What people have been told since they were last asked. A supply of no known type is told after
  // all that.
  std::vector<std::string> Notices() {
    const std::string marker = "marker" + std::to_string(++markers_);
    machine_->Add(marker, {{"type", "Gizmo\n"}});
    return notices_.Until(marker + "/type: unknown value \"Gizmo\"");
  }

  static std::shared_ptr<IHealth> Service() {
    return IHealth::fromBinder(
        ndk::SpAIBinder(AServiceManager_checkService(services::kHealthInstance)));
  }

  std::unique_ptr<Machine> machine_;
  NoticeListener notices_;
  Seen<int> levels_, cycles_, wireless_, dock_;
  linux_machine::Health health_{notices_.observer()};
  void* handle_ = nullptr;
  int markers_ = 0;
};

TEST_F(LinuxHealthTest, ALaptopsBatteryIsServedInTheUnitsOfTheService) {
  machine_->Add("AC", {{"type", "Mains\n"}, {"online", "1\n"}});
  machine_->Add("BAT0", With(kGoodBattery, {{"status", "Charging\n"},
                                            {"health", "Good\n"},
                                            {"capacity_level", "Normal\n"},
                                            {"technology", "Li-ion\n"},
                                            {"voltage_now", "12345678\n"},
                                            {"temp", "-52\n"},
                                            {"current_now", "-1500000\n"},
                                            {"current_avg", "-1400000\n"},
                                            {"charge_full", "4500000\n"},
                                            {"charge_full_design", "5000000\n"},
                                            {"charge_now", "3285000\n"},
                                            {"time_to_full_now", "5400\n"}}));
  health_.Start();
  RegisterAll();
  EXPECT_EQ(levels_.Take(), 73);
  EXPECT_EQ(cycles_.Take(), 312);
  EXPECT_EQ(wireless_.Take(), 1);  // 1: not online
  EXPECT_EQ(dock_.Take(), 1);

  HealthInfo expected;
  expected.chargerAcOnline = true;
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
  expected.batteryChargeCounterUah = 3285000;
  expected.batteryChargeTimeToFullNowSeconds = 5400;
  EXPECT_EQ(health_.info(), expected) << health_.info().toString();
  EXPECT_THAT(Notices(), IsEmpty());
}

TEST_F(LinuxHealthTest, APhonesWirelessChargerAndDockAreOnline) {
  Files battery = kGoodBattery;
  battery.erase("present");  // built in
  machine_->Add("battery", battery);
  machine_->Add("usb", {{"type", "USB\n"}, {"online", "0\n"}, {"current_max", "500000\n"}});
  machine_->Add("wireless", {{"type", "Wireless\n"},
                             {"online", "2\n"},  // online, with a programmable voltage
                             {"current_max", "1100000\n"},
                             {"voltage_max", "9000000\n"}});
  machine_->Add("Pogo-Dock", {{"type", "Mains\n"}, {"online", "1\n"}});
  health_.Start();
  RegisterAll();
  EXPECT_EQ(levels_.Take(), 73);
  EXPECT_EQ(wireless_.Take(), 0);  // 0: online
  EXPECT_EQ(dock_.Take(), 0);
  const auto info = health_.info();
  EXPECT_FALSE(info.chargerAcOnline) << "a dock is no AC charger besides";
  EXPECT_FALSE(info.chargerUsbOnline);
  EXPECT_EQ(info.maxChargingCurrentMicroamps, 1100000) << "of a charger that is online";
  EXPECT_EQ(info.maxChargingVoltageMicrovolts, 9000000);

  machine_->Change("wireless", "online", "0\n");
  EXPECT_EQ(wireless_.Take(), 1);
  machine_->Remove("Pogo-Dock");
  EXPECT_EQ(dock_.Take(), 1);
  machine_->Add("cradle", {{"type", "Dock\n"}, {"online", "1\n"}});
  EXPECT_EQ(dock_.Take(), 0);
  machine_->Change("usb", "online", "1\n");
  EXPECT_TRUE(Eventually([&] { return health_.info().chargerUsbOnline; }));
}

TEST_F(LinuxHealthTest, WhatTheKernelAnnouncesReachesClients) {
  machine_->Add("BAT0", kGoodBattery);
  health_.Start();
  RegisterAll();
  ASSERT_EQ(levels_.Take(), 73);
  ASSERT_EQ(cycles_.Take(), 312);

  machine_->Change("BAT0", "capacity", "72\n");
  EXPECT_EQ(levels_.Take(), 72);
  machine_->Change("BAT0", "capacity", "71\n");
  EXPECT_EQ(levels_.Take(), 71);
  machine_->Change("BAT0", "cycle_count", "313\n");
  EXPECT_EQ(cycles_.Take(), 313);
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
  machine_->Add("BAT0", kGoodBattery);
  health_.Start();
  const auto listener = ndk::SharedRefBase::make<ReportListener>();
  const auto service = Service();
  ASSERT_NE(service, nullptr);
  ASSERT_TRUE(service->registerCallback(listener).isOk());
  ASSERT_EQ(listener->levels.Take(), 73);
  machine_->Announce("BAT0");
  EXPECT_THAT(Notices(), IsEmpty());  // the event has been heard by now
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(listener->levels.empty());
  machine_->Change("BAT0", "capacity", "72\n");
  EXPECT_EQ(listener->levels.Take(), 72);
}

TEST_F(LinuxHealthTest, WhoAsksHearsWhatTheDriverHasNotAnnounced) {
  machine_->Add("BAT0", kGoodBattery);
  health_.Start();
  ASSERT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), 73);
  machine_->Set("BAT0", "capacity", "64\n");
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), 64);

  // Faults met on the way are told, too.
  machine_->Set("BAT0", "capacity", "\n");
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), -1);
  EXPECT_EQ(notices_.Next(), "BAT0/capacity: empty") << "with no event to wake anybody";
}

TEST_F(LinuxHealthTest, PeripheralsAreNotTheMachine) {
  // Before BAT0 by name.
  machine_->Add("A_mouse", {{"type", "Battery\n"}, {"scope", "Device\n"}, {"capacity", "11\n"}});
  // Perhaps a peripheral: nobody can tell.
  machine_->Add("A_riddle", {{"type", "Battery\n"}, {"scope", "?\n"}, {"capacity", "12\n"}});
  machine_->Add("A_ups", {{"type", "UPS\n"}, {"capacity", "13\n"}});
  machine_->Add("A_pen_charger",
                {{"type", "Wireless\n"}, {"scope", "Device\n"}, {"online", "1\n"}});
  health_.Start();
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), -1);
  EXPECT_EQ(GetWirelessChargerIsOnline(handle_, /*use_cached=*/false), 1);
  EXPECT_FALSE(health_.info().batteryPresent);
  EXPECT_THAT(Notices(),
              ElementsAre("A_riddle/scope: unknown value \"?\"", "this machine has no battery"));

  machine_->Add("BAT0", With(kGoodBattery, {{"scope", "System\n"}}));
  EXPECT_TRUE(Eventually([&] { return GetBatteryLevel(handle_, /*use_cached=*/false) == 73; }));
}

TEST_F(LinuxHealthTest, SeveralBatteriesMakeUpOneLevelAndAreNamed) {
  const Files energy = {{"type", "Battery\n"},
                        {"status", "Not charging\n"},
                        {"energy_full", "23000000\n"},
                        {"cycle_count", "7\n"}};
  machine_->Add("BAT0", {{"type", "Battery\n"}, {"present", "0\n"}});  // an empty bay
  machine_->Add("BAT1", With(energy, {{"capacity", "0\n"}, {"energy_now", "0\n"}}));
  machine_->Add("BAT2", With(energy, {{"capacity", "87\n"},
                                      {"status", "Discharging\n"},
                                      {"energy_full", "72000000\n"},
                                      {"energy_now", "62640000\n"},
                                      {"cycle_count", "31\n"}}));
  health_.Start();
  RegisterAll();
  EXPECT_EQ(levels_.Take(), 66);
  EXPECT_EQ(cycles_.Take(), 31);
  EXPECT_EQ(health_.info().batteryStatus, BatteryStatus::DISCHARGING);
  EXPECT_THAT(Notices(),
              ElementsAre("battery level: BAT1 (24 %) and BAT2 (76 %) together, by energy"))
      << "what is not there misses nothing";
  const auto supplies = health_.supplies();
  ASSERT_EQ(supplies.size(), 4u);  // and the marker
  EXPECT_EQ(supplies[0].ignored_because, "not present");
  EXPECT_EQ(supplies[2].level_percent, 87);

  machine_->Change("BAT1", "energy_now", "23000000\n");
  EXPECT_EQ(levels_.Take(), 90);
  machine_->Remove("BAT1");
  EXPECT_EQ(levels_.Take(), 87);
}

struct CombinedCase {
  const char* test;
  std::vector<Files> batteries;
  std::optional<int32_t> level;
  linux_machine::PowerSupply::Weight weight;
  friend std::ostream& operator<<(std::ostream& os, const CombinedCase& c) { return os << c.test; }
};

class LinuxCombinedTest : public testing::TestWithParam<CombinedCase> {};

TEST_P(LinuxCombinedTest, BatteriesAreWeightedByTheBestThatAllOfThemTell) {
  Machine machine("power_supply");
  int number = 0;
  for (const Files& battery : GetParam().batteries) {
    machine.Add("BAT" + std::to_string(number++), With(battery, {{"type", "Battery\n"}}));
  }
  std::vector<std::string> listed;
  ASSERT_EQ(linux_machine::ListDevices({"power_supply"}, &listed), 0);
  const linux_machine::PowerReading reading = linux_machine::ReadPowerSupplies(listed);
  ASSERT_TRUE(reading.battery);
  EXPECT_EQ(reading.battery->level_percent, GetParam().level);
  EXPECT_EQ(reading.supplies.at(0).weight, GetParam().weight);
}

using Weight = linux_machine::PowerSupply::Weight;
const Files kEnergyBattery = {
    {"capacity", "50"}, {"energy_now", "10000000"}, {"energy_full", "20000000"}};
const Files kChargeBattery = {{"capacity", "25"},
                              {"charge_now", "1000000"},
                              {"charge_full", "4000000"},
                              {"voltage_min_design", "10000000"}};
INSTANTIATE_TEST_SUITE_P(
    , LinuxCombinedTest,
    testing::Values(
        CombinedCase{"One", {With(kEnergyBattery, {{"capacity", "51"}})}, 51, Weight::kNone},
        // 1 Ah of 4 at 10 V, 5 Ah of 5 at 4 V.
        CombinedCase{"ByChargeAndVoltage",
                     {kChargeBattery,
                      {{"charge_now", "5000000"},
                       {"charge_full", "5000000"},
                       {"voltage_max_design", "4000000"}}},
                     50,
                     Weight::kCharge},
        CombinedCase{"EnergyAndCharge", {kEnergyBattery, kChargeBattery}, 33, Weight::kCharge},
        CombinedCase{"WithoutADesignVoltage",
                     {kEnergyBattery, With(kChargeBattery, {{"voltage_min_design", "0"}})},
                     38,
                     Weight::kMean},
        CombinedCase{
            "AWornOutOneHoldsNothing",
            {kEnergyBattery,
             With(kEnergyBattery, {{"energy_now", "0"}, {"energy_full", "0"}, {"capacity", "0"}})},
            50,
            Weight::kEnergy},
        CombinedCase{"OneIsUnknown",
                     {{{"capacity", "40"}, {"cycle_count", "1"}}, {{"cycle_count", "2"}}},
                     40,
                     Weight::kMean},
        CombinedCase{"MoreThanFull",
                     {kEnergyBattery, With(kEnergyBattery, {{"energy_now", "90000000"}})},
                     75,
                     Weight::kEnergy},
        CombinedCase{
            "NoneIsKnown", {{{"cycle_count", "1"}}, {{"cycle_count", "2"}}}, {}, Weight::kNone}),
    [](const auto& info) { return std::string(info.param.test); });

TEST_F(LinuxHealthTest, ABatteryWithoutAGaugeBesideOneWithAGaugeIsAnAccessory) {
  const Files keyboard = {{"type", "Battery\n"}, {"capacity", "12\n"}, {"status", "Charging\n"}};
  machine_->Add("A_keyboard", keyboard);
  health_.Start();
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), 12) << "the only one is the machine's";
  machine_->Add("BAT0", With(kGoodBattery, {{"capacity", "81\n"}}));
  EXPECT_TRUE(Eventually([&] { return GetBatteryLevel(handle_, /*use_cached=*/false) == 81; }));
  EXPECT_EQ(health_.info().batteryStatus, BatteryStatus::DISCHARGING);
  EXPECT_THAT(Notices(),
              ElementsAre("A_keyboard/cycle_count: missing",
                          "A_keyboard: ignored as an accessory: it has no energy, charge "
                          "or cycle count, but another battery has"));
  EXPECT_EQ(health_.supplies().at(0).ignored_because, "accessory");
  EXPECT_EQ(health_.supplies().at(0).level_percent, 12) << "listed all the same";
}

TEST_F(LinuxHealthTest, ALevelIsComputedWhenTheDriverHasNone) {
  Files battery = With(kGoodBattery, {{"charge_now", "2520000\n"}, {"charge_full", "4500000\n"}});
  battery.erase("capacity");
  machine_->Add("BAT0", battery);
  health_.Start();
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), 56);
  machine_->Set("BAT0", "energy_now", "20000000\n");
  machine_->Set("BAT0", "energy_full", "40000000\n");
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), 50) << "energy is the better measure";
  EXPECT_THAT(Notices(),
              ElementsAre("BAT0/capacity: missing; computed from charge_now and charge_full"));
}

TEST_F(LinuxHealthTest, UnannouncedChangesAreFoundWhileAClientListens) {
  machine_->Add("BAT0", kGoodBattery);
  linux_machine::Health health(nullptr, {.period = std::chrono::milliseconds(2)});
  health.Start();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
  ASSERT_EQ(levels_.Take(), 73);
  machine_->Set("BAT0", "capacity", "64\n");
  EXPECT_EQ(levels_.Take(), 64);
  health.Stop();
}

// How often the threads of that name have gone to sleep by now; nothing when there is none.
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
  machine_->Add("BAT0", kGoodBattery);
  machine_->AddTo("thermal", "thermal_zone0", {{"type", "cpu\n"}, {"temp", "30000\n"}});
  machine_->AddTo(
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

TEST_F(LinuxHealthTest, AMachineWithoutABatterySaysSoAndServesItsChargers) {
  machine_->Add("AC", {{"type", "Mains\n"}, {"online", "1\n"}});
  machine_->Add("BAT0", {{"type", "Battery\n"}, {"present", "0\n"}, {"capacity", "0\n"}});
  machine_->Add("pad", {{"type", "Wireless\n"}, {"online", "0\n"}});
  health_.Start();
  ASSERT_EQ(RegisterWirelessChargerIsOnlineCallback(handle_, PutValue, &wireless_), 0);
  EXPECT_EQ(wireless_.Take(), 1);
  machine_->Change("pad", "online", "1\n");
  EXPECT_EQ(wireless_.Take(), 0);

  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/true), -1);
  EXPECT_EQ(GetBatteryCycleCount(handle_, /*use_cached=*/true), -1);
  EXPECT_TRUE(health_.info().chargerAcOnline);
  EXPECT_FALSE(health_.info().batteryPresent);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no battery"));
}

TEST_F(LinuxHealthTest, ABatteryComesAndGoes) {
  health_.Start();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no battery"));

  for (const char* const level : {"40", "50"}) {
    machine_->Add("BAT0", With(kGoodBattery, {{"capacity", level}, {"cycle_count", "0\n"}}));
    ASSERT_TRUE(Eventually(
        [&] { return GetBatteryLevel(handle_, /*use_cached=*/true) == std::stoi(level); }));
    EXPECT_TRUE(health_.info().batteryPresent);
    machine_->Remove("BAT0");
    ASSERT_TRUE(Eventually([&] { return GetBatteryLevel(handle_, /*use_cached=*/true) == -1; }));
    EXPECT_FALSE(health_.info().batteryPresent);
    // A battery that comes back is a new one: its fault is told again.
    EXPECT_THAT(Notices(), ElementsAre("BAT0/cycle_count: 0 means not available",
                                       "this machine has no battery"));
  }
}

TEST_F(LinuxHealthTest, ASupplyAnnouncedAsGoneIsNotReadFromItsLeftovers) {
  machine_->Add("BAT0", kGoodBattery);
  health_.Start();
  RegisterAll();
  ASSERT_EQ(levels_.Take(), 73);
  machine_->Announce("BAT0", "remove");
  ASSERT_TRUE(Eventually([&] { return GetBatteryLevel(handle_, /*use_cached=*/true) == -1; }));
  machine_->Vanish("BAT0");
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), -1);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no battery"));
}

TEST_F(LinuxHealthTest, ASupplyIsNotReadBeforeItIsAnnounced) {
  machine_->Add("BAT0", With(kGoodBattery, {{"capacity", "\n"}}));
  machine_->Add("BAT1", kGoodBattery);
  machine_->Unlist("BAT0");
  health_.Start();
  machine_->List("BAT0");  // as while its driver is still making its files
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), 73);
  machine_->Set("BAT0", "capacity", "20\n");
  machine_->Announce("BAT0", "add");
  EXPECT_TRUE(Eventually([&] { return GetBatteryLevel(handle_, /*use_cached=*/false) == 47; }));
  EXPECT_THAT(Notices(),
              ElementsAre("battery level: BAT0 (50 %) and BAT1 (50 %) together, as the mean"));
}

TEST_F(LinuxHealthTest, ASupplyThatVanishesBeforeItIsReadIsNone) {
  machine_->Add("BAT0", kGoodBattery);
  machine_->Add("BAT1", With(kGoodBattery, {{"capacity", "21\n"}}));
  std::vector<std::string> listed;
  ASSERT_EQ(linux_machine::ListDevices({"power_supply"}, &listed), 0);
  ASSERT_EQ(listed.size(), 2u);
  machine_->Vanish("BAT0");
  const linux_machine::PowerReading reading = linux_machine::ReadPowerSupplies(listed);
  ASSERT_TRUE(reading.battery);
  EXPECT_EQ(reading.battery->level_percent, 21) << "the other one is left";
  ASSERT_EQ(reading.faults.size(), 1u);
  EXPECT_EQ(reading.faults[0].device, "BAT0");
  EXPECT_EQ(reading.faults[0].what, "vanished while it was read");
}

// One file of an otherwise good battery.
struct BrokenFile {
  enum class How { kContent, kAbsent, kUnreadable };
  const char* test;
  const char* file;
  const char* content;
  const char* notice;  // after the supply's name
  How how = How::kContent;
  int level = -1;  // what is left of it
  friend std::ostream& operator<<(std::ostream& os, const BrokenFile& broken) {
    return os << broken.file;
  }
};

class LinuxBrokenFileTest : public LinuxHealthTest,
                            public testing::WithParamInterface<BrokenFile> {};

TEST_P(LinuxBrokenFileTest, IsToldOnceAndMakesUpNothing) {
  const BrokenFile& broken = GetParam();
  machine_->Add("BAT0",
                With(With(kGoodBattery, {{"health", "Good\n"}}), {{broken.file, broken.content}}));
  if (broken.how == BrokenFile::How::kAbsent) machine_->Erase("BAT0", broken.file);
  if (broken.how == BrokenFile::How::kUnreadable) machine_->MakeUnreadable("BAT0", broken.file);
  health_.Start();
  const bool no_level = std::string_view(broken.file) == "capacity";
  const bool no_cycles = std::string_view(broken.file) == "cycle_count";
  const int level = no_level ? broken.level : 73;
  const int cycles = no_cycles ? -1 : 312;
  for (int reading = 0; reading < 3; ++reading) {
    EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), level);
    EXPECT_EQ(GetBatteryCycleCount(handle_, /*use_cached=*/false), cycles);
    machine_->Announce("BAT0");
  }
  EXPECT_THAT(Notices(), ElementsAre(std::string("BAT0/") + broken.file + ": " + broken.notice));

  // Nothing else of the battery suffers, and the file's own field is what it is on a machine
  // without the file.
  auto expected = health_.info();
  expected.batteryPresent = true;
  expected.batteryStatus = BatteryStatus::DISCHARGING;
  expected.batteryVoltageMillivolts = 0;
  expected.batteryTemperatureTenthsCelsius = 0;
  expected.batteryTechnology = "";
  EXPECT_EQ(health_.info(), expected) << health_.info().toString();
  const bool no_health = std::string_view(broken.file) == "health";
  EXPECT_EQ(health_.info().batteryHealth, no_health ? BatteryHealth::UNKNOWN : BatteryHealth::GOOD);
}

using How = BrokenFile::How;
INSTANTIATE_TEST_SUITE_P(
    , LinuxBrokenFileTest,
    testing::Values(
        BrokenFile{"EmptyLevel", "capacity", "", "empty"},
        BrokenFile{"TextLevel", "capacity", "full\n", "\"full\" is not a number"},
        BrokenFile{"LevelWithUnit", "capacity", "55%\n", "\"55%\" is not a number"},
        BrokenFile{"HexLevel", "capacity", "0x37\n", "\"0x37\" is not a number"},
        BrokenFile{"FractionalLevel", "capacity", "55.5\n", "\"55.5\" is not a number"},
        BrokenFile{"BinaryLevel", "capacity", "\x01\xff\n", "\"??\" is not a number"},
        BrokenFile{"JustTooHighLevel", "capacity", "101\n",
                   "101 is not within 0 to 100, taken as 100", How::kContent, 100},
        BrokenFile{"NegativeLevel", "capacity", "-1\n", "-1 is not within 0 to 100, taken as 0",
                   How::kContent, 0},
        // 2 to the power of 32, and 55 more: what is left of it in 32 bits would do.
        BrokenFile{"WrappingLevel", "capacity", "4294967351\n",
                   "4294967351 is not within 0 to 100, taken as 100", How::kContent, 100},
        BrokenFile{"EndlessLevel", "capacity", "99999999999999999999999999999999999999999999\n",
                   "\"9999999999999999999999999999999999999999...\" is too large"},
        BrokenFile{"AbsentLevel", "capacity", "", "missing", How::kAbsent},
        BrokenFile{"UnreadableLevel", "capacity", "55\n", "cannot be read: Operation not permitted",
                   How::kUnreadable},
        BrokenFile{"ZeroCycles", "cycle_count", "0\n", "0 means not available"},
        BrokenFile{"NegativeCycles", "cycle_count", "-3\n", "\"-3\" is not within 0 to 2147483647"},
        BrokenFile{"TooManyCycles", "cycle_count", "2147483648\n",
                   "\"2147483648\" is not within 0 to 2147483647"},
        BrokenFile{"AbsentCycles", "cycle_count", "", "missing", How::kAbsent},
        BrokenFile{"TextVoltage", "voltage_now", "high\n", "\"high\" is not a number"},
        BrokenFile{"BelowAbsoluteZero", "temp", "-2732\n",
                   "\"-2732\" is not within -2731 to 2147483647"},
        BrokenFile{"BinaryTechnology", "technology", "\x02Li\n",
                   "\"?Li\" has unprintable characters"},
        BrokenFile{"StrangeHealth", "health", "Peachy\n", "unknown value \"Peachy\""}),
    [](const auto& info) { return std::string(info.param.test); });

TEST_F(LinuxHealthTest, AChargerOfWhichNothingIsKnownIsNotOnline) {
  machine_->Add("BAT0", kGoodBattery);
  machine_->Add("mute", {{"type", "Wireless\n"}});
  machine_->Add("odd_dock", {{"type", "USB\n"}, {"online", "3\n"}});
  machine_->Add("nameless", {{"online", "1\n"}});
  health_.Start();
  EXPECT_EQ(GetWirelessChargerIsOnline(handle_, /*use_cached=*/false), 1);
  EXPECT_EQ(GetDockChargerIsOnline(handle_, /*use_cached=*/false), 1);
  EXPECT_THAT(Notices(), ElementsAre("mute/online: missing", "nameless/type: missing",
                                     "odd_dock/online: \"3\" is not within 0 to 2"));
}

TEST_F(LinuxHealthTest, WhatTheMachineCannotTellIsRefused) {
  machine_->Add("BAT0", With(kGoodBattery, {{"capacity", "\n"}, {"current_now", "-250\n"}}));
  health_.Start();
  const auto service = Service();
  ASSERT_NE(service, nullptr);
  int32_t value = 0;
  EXPECT_EQ(service->getCapacity(&value).getExceptionCode(), EX_UNSUPPORTED_OPERATION);
  EXPECT_EQ(service->getChargeCounterUah(&value).getExceptionCode(), EX_UNSUPPORTED_OPERATION);
  EXPECT_TRUE(service->getCurrentNowMicroamps(&value).isOk());
  EXPECT_EQ(value, -250);
}

TEST_F(LinuxHealthTest, ClientsOutliveAStopAndHearOfTheNextStart) {
  machine_->Add("BAT0", kGoodBattery);
  health_.Start();
  RegisterAll();
  ASSERT_EQ(levels_.Take(), 73);
  EXPECT_TRUE(AServiceManager_isDeclared(services::kHealthInstance));

  health_.Stop();
  EXPECT_FALSE(AServiceManager_isDeclared(services::kHealthInstance));
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), -EAGAIN);
  machine_->Change("BAT0", "capacity", "60\n");  // nobody listens

  health_.Start();
  EXPECT_EQ(levels_.Take(), 60);
}

TEST_F(LinuxHealthTest, StoppingLeavesNothingOpen) {
  constexpr int kRounds = 20;
  machine_->Add("BAT0", kGoodBattery);
  const int before = Descriptors();
  for (int i = 0; i < kRounds; ++i) {
    health_.Start();
    void* handle = nullptr;
    InitBatteryInfo(&handle);
    EXPECT_EQ(GetBatteryLevel(handle, /*use_cached=*/false), 73);
    DeinitBatteryInfo(&handle);
    health_.Stop();
  }
  // What makes the fake sysfs may have opened a few of its own meanwhile.
  EXPECT_LT(Descriptors(), before + kRounds);
}

TEST_F(LinuxHealthTest, SuppliesThatComeAndGoWhileManyAskEndInTheLastState) {
  machine_->Add("BAT0", kGoodBattery);
  health_.Start();
  RegisterAll();
  const auto has = [&](int level, BatteryStatus status) {
    const auto is_so = [&] {
      const HealthInfo info = health_.info();
      return info.batteryLevel == level && info.batteryStatus == status;
    };
    return EventuallyWhileAsked(is_so, [&] {
      const int asked = GetBatteryLevel(handle_, /*use_cached=*/false);
      EXPECT_TRUE(asked == 73 || asked == 42) << asked;
    });
  };
  const auto spare = With(kGoodBattery, {{"capacity", "10\n"}, {"status", "Full\n"}});
  for (int i = 0; i < 20; ++i) {
    const bool charges = i % 2 == 0;
    machine_->Add("A_spare", spare);
    // The mean of 73 and 10.
    EXPECT_TRUE(has(42, charges ? BatteryStatus::DISCHARGING : BatteryStatus::CHARGING));
    machine_->Change("BAT0", "status", charges ? "Charging\n" : "Discharging\n");
    machine_->Remove("A_spare");
    EXPECT_TRUE(has(73, charges ? BatteryStatus::CHARGING : BatteryStatus::DISCHARGING));
  }
  GetBatteryLevel(handle_, /*use_cached=*/false);  // has the machine read once more
  // Reports of earlier states may still be on their way, in order; the last one tells the end.
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/true), 73);
  EXPECT_EQ(GetBatteryLevel(handle_, /*use_cached=*/false), 73);
  EXPECT_EQ(health_.info().batteryStatus, BatteryStatus::DISCHARGING);
}

}  // namespace
}  // namespace norvik::qel
