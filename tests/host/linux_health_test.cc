// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The Linux machine's battery and chargers, on a fake sysfs made for each test.
#include "quorvel/linux_machine/health.h"

#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "clients.h"
#include "linux_machine.h"
#include "process_state.h"
#include "quiet.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

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

  // Registers clients for all four properties and takes their first calls. The machine has values
  // for all.
  void RegisterAll() {
    ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
    ASSERT_EQ(RegisterBatteryCycleCountCallback(handle_, PutValue, &cycles_), 0);
    ASSERT_EQ(RegisterWirelessChargerIsOnlineCallback(handle_, PutValue, &wireless_), 0);
    ASSERT_EQ(RegisterDockChargerIsOnlineCallback(handle_, PutValue, &dock_), 0);
  }
  int AskLevel() { return GetBatteryLevel(handle_, /*use_cached=*/false); }
  int CachedLevel() { return GetBatteryLevel(handle_, /*use_cached=*/true); }

  Seen<int> levels_, cycles_, wireless_, dock_;
  linux_machine::Health health_{observer()};
  void* handle_ = nullptr;
};

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

TEST_F(LinuxHealthTest, AnEventWithoutAChangeIsNotReported) {
  std::atomic<int> reports = 0;
  linux_machine::Health health([&](const services::ServiceEvent& event) {
    if (event.kind == services::ServiceEvent::Kind::kReported) ++reports;
    observer()(event);
  });
  machine_.Add("BAT0", kGoodBattery);
  health.Start();
  machine_.Announce("BAT0");
  EXPECT_THAT(Notices(), IsEmpty());  // the event has been handled by now
  EXPECT_EQ(reports, 1);
  machine_.Change("BAT0", "capacity", "72\n");
  EXPECT_THAT(Notices(), IsEmpty());
  EXPECT_EQ(reports, 2);
}

TEST_F(LinuxHealthTest, AQuestionReadsWhatTheDriverHasNotAnnounced) {
  machine_.Add("BAT0", kGoodBattery);
  health_.Start();
  ASSERT_EQ(AskLevel(), 73);
  machine_.Set("BAT0", "capacity", "64\n");
  EXPECT_EQ(AskLevel(), 64);

  // A query also reports faults.
  machine_.Set("BAT0", "capacity", "\n");
  EXPECT_EQ(AskLevel(), -1);
  EXPECT_EQ(notices_.Take(), "BAT0/capacity: empty") << "without an event";
}

TEST_F(LinuxHealthTest, UnannouncedChangesAreFoundAndTheThreadWakesUpOnlyWhileAClientListens) {
  constexpr auto kPeriod = std::chrono::milliseconds(2);
  machine_.Add("BAT0", kGoodBattery);
  linux_machine::Health health(nullptr, {.period = kPeriod});
  health.Start();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
  ASSERT_EQ(levels_.Take(), 73);
  machine_.Set("BAT0", "capacity", "64\n");
  EXPECT_EQ(levels_.Take(), 64);
  DeinitBatteryInfo(&handle_);
  ASSERT_EQ(health.callback_count(), 0u);

  ASSERT_TRUE(WaitUntilQuiet());  // the service has noticed that the client has left
  // The thread's voluntary and involuntary context switches.
  const auto switches = [] {
    const std::string status = ReadThreadFile(ThreadIdsNamed({"power_supply"}).at(0), "status");
    return status.substr(status.find("voluntary_ctxt_switches:"));
  };
  const std::string before = switches();
  EXPECT_EQ(levels_.Take(25 * kPeriod), std::nullopt);
  EXPECT_EQ(switches(), before) << "a client that has left leaves no timer behind";
}

TEST_F(LinuxHealthTest, ABatteryComesAndGoes) {
  health_.Start();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, PutValue, &levels_), 0);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no battery"));

  for (const char* const level : {"40", "50"}) {
    machine_.Add("BAT0", With(kGoodBattery, {{"capacity", level}, {"cycle_count", "0\n"}}));
    ASSERT_TRUE(Eventually([&] { return CachedLevel() == std::stoi(level); }));
    EXPECT_TRUE(health_.info().batteryPresent);
    machine_.Announce("BAT0", "remove");
    ASSERT_TRUE(Eventually([&] { return CachedLevel() == -1; })) << "not read from its leftovers";
    machine_.Vanish("BAT0");
    EXPECT_EQ(AskLevel(), -1);
    EXPECT_FALSE(health_.info().batteryPresent);
    // A battery that comes back is a new one: its fault is reported again.
    EXPECT_THAT(Notices(), ElementsAre("BAT0/cycle_count: 0 means not available",
                                       "this machine has no battery"));
  }
}

TEST_F(LinuxHealthTest, ASupplyIsNotReadBeforeItIsAnnounced) {
  machine_.Add("BAT0", With(kGoodBattery, {{"capacity", "\n"}}));
  machine_.Add("BAT1", kGoodBattery);
  machine_.Unlist("BAT0");
  health_.Start();
  machine_.List("BAT0");  // like a driver that is still creating its files
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
  const auto service = aidl::android::hardware::health::IHealth::fromBinder(
      ndk::SpAIBinder(AServiceManager_checkService(services::kHealthInstance)));
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

TEST_F(LinuxHealthTest, TheLastStateWinsWhileSuppliesComeAndGoAndManyThreadsAsk) {
  machine_.Add("BAT0", kGoodBattery);
  health_.Start();
  RegisterAll();
  const auto has = [&](int level) {
    return EventuallyWhileAsked([&] { return health_.info().batteryLevel == level; },
                                [&] {
                                  const int asked = AskLevel();
                                  EXPECT_TRUE(asked == 73 || asked == 42) << asked;
                                });
  };
  for (int i = 0; i < 20; ++i) {
    machine_.Add("A_spare", With(kGoodBattery, {{"capacity", "10\n"}}));
    EXPECT_TRUE(has(42)) << "the mean";
    machine_.Remove("A_spare");
    EXPECT_TRUE(has(73));
  }
  AskLevel();  // makes the service read the machine once more
  // Reports of earlier states may still be queued. They arrive in order.
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(CachedLevel(), 73);
  EXPECT_EQ(AskLevel(), 73);
}

}  // namespace
}  // namespace norvik::qel
