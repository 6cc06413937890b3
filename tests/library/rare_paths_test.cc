// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Code that neither the C functions nor the simulated phone reach: functions that only the classes
// have, and unusual answers of services.
#include <hidl/Status.h>

#include "battery/battery_info.h"
#include "battery_fixture.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/services/hidl_thermal_service.h"
#include "thermal/audio_thermal_callback.h"
#include "thermal/thermal_info.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

using android::sp;

using RareBatteryTest = BatteryFixture;

TEST_F(RareBatteryTest, ADeathToldByTheCallerIsRepaired) {
  audio::BatteryInfo battery;
  ASSERT_TRUE(battery.Initialize());
  ASSERT_EQ(battery.RegisterInfoCallback(audio::BatteryInfo::kBatteryLevel, Client<0>, &seen_), 0);
  ASSERT_EQ(seen_.Take(), (Call{0, health_.info().batteryLevel}));
  health_.SetLevel(7);
  ASSERT_EQ(seen_.Take(), (Call{0, 7}));
  battery.HealthServiceDied();
  EXPECT_TRUE(health_.on(services::HealthOperation::kRegisterCallback).WaitForCalls(2));
  battery.Deinitialize();
}

class RareThermalTest : public ThermalFixture {
 protected:
  RareThermalTest() { fake::DeclareHidl(services::kHidlThermalInstance); }
};

TEST_F(RareThermalTest, ACallbackWritesItsPartOfTheDump) {
  audio::AudioThermalCallback callback(audio::AudioThermalCallback::TemperatureType::SKIN);
  const auto dump = [](void* object, int fd) {
    static_cast<audio::AudioThermalCallback*>(object)->Dump(fd);
  };
  EXPECT_THAT(TextOf(dump, &callback), HasSubstr("    supported_temperature_type_: 3\n"));
}

TEST_F(RareThermalTest, AClientThatLeftMayDeregisterAgainDuringDeinit) {
  thermal_.Start(ThermalPath::kHidl);
  RegisterCpu();
  Gate gate;
  Seen<int> results;
  ActingClient client = {.action = [&](int) {
    results.Put(DeregisterThermalCallback(handle_, 1));
    gate.Pass();
    results.Put(DeregisterThermalCallback(handle_, 1));
  }};
  ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", ActingClient::OnValue, &client), 0);
  EXPECT_EQ(results.Take(), 0);
  Background end("DeinitThermalInfo()", [this] { DeinitThermalInfo(&handle_); });
  // Once the callback is unregistered, Deinit...() waits for the worker, which is in the client.
  EXPECT_TRUE(Eventually([this] { return thermal_.callback_count(ThermalPath::kHidl) == 0; }));
  gate.Open();
  EXPECT_EQ(results.Take(), -EINVAL);
}

// A service that answers queries with FAILURE together with temperatures.
class FailingThermal : public services::HidlThermalService {
 public:
  using HidlThermalService::HidlThermalService;
  Return<void> getCurrentTemperatures(bool filter, TemperatureType type,
                                      getCurrentTemperatures_cb _hidl_cb) override {
    return HidlThermalService::getCurrentTemperatures(
        filter, type, [&](const ThermalStatus& /*success*/, const auto& temperatures) {
          _hidl_cb(Verdict::Failure("stale").status, temperatures);
        });
  }
};

TEST_F(RareThermalTest, RecordsThatComeWithAFailureAreDropped) {
  fake::ServiceProcess process("thermal");
  ASSERT_TRUE(process.AddHidlService(sp<FailingThermal>::make(thermal_.data())));
  std::vector<int> limits(16);
  int count = static_cast<int>(limits.size());
  EXPECT_EQ(GetBatteryChargeLimitVoltage(handle_, limits.data(), &count, /*use_cached=*/false), 0);
  EXPECT_EQ(count, 0);
  EXPECT_FALSE(Operate());
  EXPECT_EQ(Register<1>("SKIN", "skin"), -EINVAL);
  DeinitThermalInfo(&handle_);
}

// A service in this process whose death links fail in the transport.
class UnlinkableThermal : public services::HidlThermalService {
 public:
  using HidlThermalService::HidlThermalService;
  Return<bool> linkToDeath(const sp<android::hardware::hidl_death_recipient>& recipient,
                           uint64_t) override {
    kept = recipient;
    return android::hardware::Status::fromStatusT(android::UNKNOWN_ERROR);
  }
  Return<bool> unlinkToDeath(const sp<android::hardware::hidl_death_recipient>&) override {
    return android::hardware::Status::fromStatusT(android::UNKNOWN_ERROR);
  }
  sp<android::hardware::hidl_death_recipient> kept;  // for a notification despite the failure
};

TEST_F(RareThermalTest, ALinkThatTheTransportFailsToCarryIsLoggedAndNothingElse) {
  const auto service = sp<UnlinkableThermal>::make(thermal_.data());
  ASSERT_EQ(service->registerAsService(), android::OK);
  OverwrittenObject<audio::ThermalInfo> object;
  ASSERT_TRUE(object.get()->Initialize());
  for (int i = 0; i < 2; ++i) EXPECT_EQ(QuerySkin(object.get()), 1);
  EXPECT_EQ(thermal_.on(fake::BinderFunction::kTryGetHidlService).calls(), 1)
      << "the connection counts as made";
  object.End();
  service->kept->serviceDied(/*cookie=*/0, service);
  EXPECT_THAT(Warnings(), ElementsAre(kNotDeclared, HasSubstr("Failed to link to death (HIDL): "),
                                      HasSubstr("Failed to unlink to death (HIDL): ")));
}

}  // namespace
}  // namespace norvik::qel
