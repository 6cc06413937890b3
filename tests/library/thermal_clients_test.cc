// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Registration and deregistration of thermal clients, and the values that they receive.
#include "quorvel/fake/service_process.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

using aidl::android::hardware::thermal::Temperature;

class ThermalClientsTest : public ThermalPathTest {
 protected:
  void Notify(TemperatureType type, const char* name, ThrottlingSeverity severity) {
    thermal_.Notify({.type = type, .name = name, .throttlingStatus = severity});
  }
};
QUORVEL_TEST_BOTH_PATHS(ThermalClientsTest);

TEST_P(ThermalClientsTest, OnlyTheTemperatureOfTheTypeAndNameIsDelivered) {
  RegisterSkin();
  Notify(TemperatureType::SKIN, "Skin", ThrottlingSeverity::LIGHT);
  Notify(TemperatureType::SKIN, "ski", ThrottlingSeverity::LIGHT);
  Notify(TemperatureType::CPU, "skin", ThrottlingSeverity::LIGHT);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  Notify(TemperatureType::SKIN, "skin", ThrottlingSeverity::SEVERE);
  EXPECT_EQ(seen_.Take(), (Call{1, 3}));
}

TEST_P(ThermalClientsTest, TheLastDeregistrationWaitsForACallbackUnderWay) {
  ASSERT_EQ(RegisterClient(handle_, 9, "SKIN", "skin", SlowClient::OnValue, &slow_), 0);
  ASSERT_TRUE(slow_.gate.WaitForArrivals());
  std::atomic<bool> returned{false};
  Background client("a deregistration", [&] {
    EXPECT_EQ(DeregisterThermalCallback(handle_, 9), 0);
    returned = true;
  });
  ASSERT_TRUE(on(ThermalCall::kUnregister).WaitForCalls(1));
  RegisterCpu();  // needs the lock; a slow client does not block clients of other types
  EXPECT_FALSE(returned);
  slow_.gate.Open();
}

TEST_P(ThermalClientsTest, AnIdIsUniqueWithinItsType) {
  RegisterSkin();
  const int queries = on(ThermalCall::kQuery).calls();
  EXPECT_EQ(Register<1>("SKIN", "skin"), -EINVAL);
  EXPECT_EQ(on(ThermalCall::kQuery).calls(), queries) << "refused without a query";
  RegisterAndTake<1>("CPU", "cpu");
  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_EQ(registered(), 1u);
  EXPECT_THAT(Dump(), testing::AllOf(HasSubstr("supported_temperature_type_: 0\n"),
                                     Not(HasSubstr("supported_temperature_type_: 3\n"))))
      << "the type that came first loses it";
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), -EINVAL);
  EXPECT_THAT(Warnings(), Not(Contains(HasSubstr("egister"))));
}

TEST_P(ThermalClientsTest, TemperaturesThatTheServiceDoesNotReportAreRefused) {
  EXPECT_EQ(Register<1>("SKIN", "Skin"), -EINVAL);
  EXPECT_EQ(Register<1>("SKIN", ""), -EINVAL);
  EXPECT_EQ(Register<1>("CPU", "skin"), -EINVAL);
  EXPECT_EQ(Register<1>("GPU", "skin"), -EINVAL);
  EXPECT_EQ(log_.Count("AddClientCallback: name(Skin) can't be found in service supported list"),
            1);
  EXPECT_EQ(registered(), 0u) << "no registration without a client";
  EXPECT_EQ(on(ThermalCall::kUnregister).calls(), 4);
  EXPECT_EQ(Dump(), "ThermalInfo:\n");
}

// The library does not know the type "SPEAKER". A HIDL service reports it as UNKNOWN, which is -1.
TEST_P(ThermalClientsTest, AnUnknownTypeIsQueriedAsUnknown) {
  EXPECT_EQ(Register<1>("SPEAKER", "speaker"), is_aidl() ? -EINVAL : 0);
  EXPECT_EQ(log_.Count("GetThermalTypeByName: unknown temperature type name! SPEAKER"), 1);
}

TEST_P(ThermalClientsTest, ARefusedRegistrationWithTheServiceIsOnlyLogged) {
  on(ThermalCall::kRegister).Then(Outcome::Exception(EX_ILLEGAL_STATE, "full"));
  RegisterSkin();
  EXPECT_EQ(log_.Count("RegisterCallbackToThermal: Failed to register thermal callback with type "
                       "3: full"),
            1);
  EXPECT_EQ(registered(), 0u);
  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_THAT(Warnings(), Contains(HasSubstr("DeregisterCallbackToThermal: Failed to unregister "
                                             "thermal callback: ")));
}

TEST_P(ThermalClientsTest, TheDumpListsTypesAndClients) {
  RegisterAndTake<7>("SKIN", "skin");
  RegisterAndTake<-1>("CPU", "cpu");
  EXPECT_EQ(log_.Count("RegisterThermalCallbackWithLock: type SKIN"), 1);
  EXPECT_THAT(Dump(), testing::ContainsRegex("^ThermalInfo:\n"
                                             "  audio thermal callback: 0x[0-9a-f]+\n"
                                             "    supported_temperature_type_: 3\n"
                                             "    clients: \n"
                                             "      id: 7, temperature_name:skin\n"
                                             "  audio thermal callback: 0x[0-9a-f]+\n"
                                             "    supported_temperature_type_: 0\n"
                                             "    clients: \n"
                                             "      id: -1, temperature_name:cpu\n$"));
}

using ThermalHidlClientsTest = ThermalFixture;

// In HIDL the transport itself can fail.
TEST_F(ThermalHidlClientsTest, FailedTransactionsAreLogged) {
  Bring(ThermalPath::kHidl);
  const auto fail = [this](HidlThermalOperation operation) {
    thermal_.on(operation).Then({.status = STATUS_FAILED_TRANSACTION});
  };
  fail(HidlThermalOperation::kGetCurrentTemperatures);
  EXPECT_EQ(Register<1>("SKIN", "skin"), -EINVAL);
  fail(HidlThermalOperation::kRegisterThermalChangedCallback);
  RegisterSkin();
  fail(HidlThermalOperation::kUnregisterThermalChangedCallback);
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_THAT(Warnings(), ElementsAre(kNotDeclared, "AddClientCallback: Transaction failed.",
                                      "RegisterCallbackToThermal: Transaction failed.",
                                      "DeregisterCallbackToThermal: Transaction failed. "));
}

// A service that notifies during a registration, and waits until the notification is handled.
class HastyThermal : public services::ThermalService {
 public:
  using ThermalService::ThermalService;

  ndk::ScopedAStatus registerThermalChangedCallbackWithType(const Callback& callback,
                                                            TemperatureType type) override {
    ndk::ScopedAStatus status =
        ThermalService::registerThermalChangedCallbackWithType(callback, type);
    Notify({.type = type, .name = "skin", .throttlingStatus = ThrottlingSeverity::SHUTDOWN});
    EXPECT_TRUE(fake::WaitUntilDelivered());
    return status;
  }
};

using ThermalEarlyTest = ThermalFixture;

TEST_F(ThermalEarlyTest, ANotificationBeforeTheRegistrationHasReturnedIsDropped) {
  thermal_.Declare(ThermalPath::kAidl);
  fake::ServiceProcess process("thermal");
  process.AddService(ndk::SharedRefBase::make<HastyThermal>(thermal_.data()),
                     services::kThermalInstance);
  RegisterSkin();
  EXPECT_TRUE(seen_.empty());
  Deinit();
}

}  // namespace
}  // namespace norvik::qel
