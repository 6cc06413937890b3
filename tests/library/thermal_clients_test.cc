// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// How the clients of temperatures come and go, and what they hear.
#include <android/log.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "quorvel/fake/service_process.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

using aidl::android::hardware::thermal::Temperature;
using aidl::android::hardware::thermal::TemperatureType;
using fake::Outcome;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ThermalClientsTest : public ThermalPathTest {
 protected:
  void Notify(TemperatureType type, const char* name, ThrottlingSeverity severity) {
    thermal_.Notify({.type = type, .name = name, .throttlingStatus = severity});
  }
};
INSTANTIATE_TEST_SUITE_P(, ThermalClientsTest,
                         testing::Values(ThermalPath::kAidl, ThermalPath::kHidl), PathName);

TEST_P(ThermalClientsTest, AClientHearsTheSeverityOfTheMomentAndEveryChange) {
  thermal_.SetSeverity("skin", ThrottlingSeverity::MODERATE);
  RegisterAndHear<1>("SKIN", "skin", 2);
  RegisterAndHear<2>("CPU", "cpu");
  EXPECT_EQ(registered(), 2u);
  thermal_.SetSeverity("skin", ThrottlingSeverity::SHUTDOWN);
  EXPECT_EQ(seen_.Take(), (Call{1, 6}));
  thermal_.SetSeverity("cpu", ThrottlingSeverity::LIGHT);
  EXPECT_EQ(seen_.Take(), (Call{2, 1}));
  EXPECT_EQ(log_.Count("RegisterThermalCallbackWithLock: type SKIN"), 1);
  EXPECT_EQ(log_.Count("RegisterThermalCallbackWithLock: type CPU"), 1);
}

TEST_P(ThermalClientsTest, OnlyTheTemperatureOfThatNameIsHeard) {
  RegisterAndHear<1>("SKIN", "skin");
  Notify(TemperatureType::SKIN, "Skin", ThrottlingSeverity::LIGHT);
  Notify(TemperatureType::SKIN, "ski", ThrottlingSeverity::LIGHT);
  Notify(TemperatureType::CPU, "skin", ThrottlingSeverity::LIGHT);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  Notify(TemperatureType::SKIN, "skin", ThrottlingSeverity::SEVERE);
  EXPECT_EQ(seen_.Take(), (Call{1, 3}));
}

// A client whose temperature is told to all of the type: whoever has the same name hears it again.
TEST_P(ThermalClientsTest, ALaterClientOfATemperatureHasTheOthersToldToo) {
  RegisterAndHear<1>("SKIN", "skin");
  ASSERT_EQ(Register<2>("SKIN", "skin"), 0);
  const std::vector<Call> both = {*seen_.Take(), *seen_.Take()};
  EXPECT_THAT(both, testing::UnorderedElementsAre(Call{1, 0}, Call{2, 0}));
  EXPECT_EQ(registered(), 1u);
}

TEST_P(ThermalClientsTest, EachHearsItsOwnTemperatureWhileOthersOfTheTypeComeAndGo) {
  const auto both = [this] { return std::vector<Call>{*seen_.Take(), *seen_.Take()}; };
  thermal_.Change([](services::ThermalData& data) {
    data.temperatures.push_back({.type = TemperatureType::SKIN, .name = "frame"});
  });
  RegisterAndHear<1>("SKIN", "skin");
  RegisterAndHear<2>("SKIN", "frame");
  ASSERT_EQ(Register<3>("SKIN", "frame"), 0);
  EXPECT_THAT(both(), testing::UnorderedElementsAre(Call{2, 0}, Call{3, 0}));
  Notify(TemperatureType::SKIN, "skin", ThrottlingSeverity::LIGHT);
  EXPECT_EQ(seen_.Take(), (Call{1, 1}));
  Notify(TemperatureType::SKIN, "frame", ThrottlingSeverity::MODERATE);
  EXPECT_THAT(both(), testing::UnorderedElementsAre(Call{2, 2}, Call{3, 2}));
  ASSERT_EQ(DeregisterThermalCallback(handle_, 2), 0);
  Notify(TemperatureType::SKIN, "frame", ThrottlingSeverity::SEVERE);
  EXPECT_EQ(seen_.Take(), (Call{3, 3}));
  Notify(TemperatureType::SKIN, "skin", ThrottlingSeverity::CRITICAL);
  EXPECT_EQ(seen_.Take(), (Call{1, 4})) << "who has left is not called";
}

TEST_P(ThermalClientsTest, OfARunOfChangesTheOldestIsHeard) {
  Stall stall;
  RegisterAndHear<1>("SKIN", "skin");
  ASSERT_EQ(RegisterClient(handle_, 2, "SKIN", "skin", Stall::Callback, &stall), 0);
  ASSERT_TRUE(stall.gate.WaitForArrivals());
  Notify(TemperatureType::SKIN, "skin", ThrottlingSeverity::SEVERE);
  Notify(TemperatureType::SKIN, "skin", ThrottlingSeverity::LIGHT);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  stall.gate.Open();
  EXPECT_EQ(TakeThrottled(), (Call{1, 3}));
  Notify(TemperatureType::SKIN, "skin", ThrottlingSeverity::CRITICAL);
  EXPECT_EQ(seen_.Take(), (Call{1, 4})) << "the later one is not heard afterwards";
  DeinitThermalInfo(&handle_);  // before the cookie goes
}

TEST_P(ThermalClientsTest, TypesDoNotWaitForEachOther) {
  Stall stall;
  ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", Stall::Callback, &stall), 0);
  ASSERT_TRUE(stall.gate.WaitForArrivals());
  RegisterAndHear<2>("CPU", "cpu");
  stall.gate.Open();
  DeinitThermalInfo(&handle_);
}

TEST_P(ThermalClientsTest, AnIdIsUniqueWithinItsType) {
  RegisterAndHear<1>("SKIN", "skin");
  const int queries = on(ThermalCall::kQuery).calls();
  EXPECT_EQ(Register<1>("SKIN", "skin"), -EINVAL);
  EXPECT_EQ(on(ThermalCall::kQuery).calls(), queries) << "nobody is asked";
  RegisterAndHear<1>("CPU", "cpu");
  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_EQ(registered(), 1u);
  EXPECT_THAT(Dump(), testing::AllOf(HasSubstr("supported_temperature_type_: 0\n"),
                                     Not(HasSubstr("supported_temperature_type_: 3\n"))))
      << "the type that came first loses it";
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), -EINVAL);
  EXPECT_THAT(Log(ANDROID_LOG_WARN), Not(Contains(HasSubstr("egister"))));
}

TEST_P(ThermalClientsTest, WhatTheServiceDoesNotReportIsRefused) {
  EXPECT_EQ(Register<1>("SKIN", "Skin"), -EINVAL);
  EXPECT_EQ(Register<1>("SKIN", ""), -EINVAL);
  EXPECT_EQ(Register<1>("CPU", "skin"), -EINVAL);
  EXPECT_EQ(Register<1>("GPU", "skin"), -EINVAL);
  EXPECT_EQ(log_.Count("AddClientCallback: name(Skin) can't be found in service supported list"),
            1);
  EXPECT_EQ(registered(), 0u) << "registered with the service for nobody";
  EXPECT_EQ(on(ThermalCall::kUnregister).calls(), 4);
  EXPECT_EQ(Dump(), "ThermalInfo:\n");
  RegisterAndHear<1>("SKIN", "skin");
  EXPECT_EQ(Register<2>("SKIN", "skins"), -EINVAL);
  EXPECT_EQ(registered(), 1u) << "the type still has a client";
}

// "SPEAKER" is no type of the library; a HIDL service reports it as UNKNOWN, which is -1.
TEST_P(ThermalClientsTest, AnUnknownTypeIsAskedForAsItComes) {
  EXPECT_EQ(Register<1>("SPEAKER", "speaker"), GetParam() == ThermalPath::kHidl ? 0 : -EINVAL);
  EXPECT_EQ(log_.Count("GetThermalTypeByName: unknown temperature type name! SPEAKER"), 1);
}

TEST_P(ThermalClientsTest, NullsAreRefusedInSilence) {
  const ThermalCallbackParam good = {
      .id = 1, .type_name = "SKIN", .temperature_name = "skin", .callback = Client<1>};
  ThermalCallbackParam bad = good;
  EXPECT_EQ(RegisterThermalCallback(nullptr, &good, &seen_), -EINVAL);
  EXPECT_EQ(RegisterThermalCallback(handle_, nullptr, &seen_), -EINVAL);
  EXPECT_EQ(RegisterThermalCallback(handle_, &good, nullptr), -EINVAL);
  bad.type_name = nullptr;
  EXPECT_EQ(RegisterThermalCallback(handle_, &bad, &seen_), -EINVAL);
  bad = good;
  bad.temperature_name = nullptr;
  EXPECT_EQ(RegisterThermalCallback(handle_, &bad, &seen_), -EINVAL);
  bad = good;
  bad.callback = nullptr;
  EXPECT_EQ(RegisterThermalCallback(handle_, &bad, &seen_), -EINVAL);
  EXPECT_EQ(DeregisterThermalCallback(nullptr, 1), -EINVAL);
  DumpThermalInfo(nullptr, 1);
  InitThermalInfo(nullptr);
  DeinitThermalInfo(nullptr);
  void* none = nullptr;
  DeinitThermalInfo(&none);
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_P(ThermalClientsTest, TheLastClientOfATypeLeavesTheServiceAndALaterOneComesBack) {
  RegisterAndHear<1>("SKIN", "skin");
  RegisterAndHear<2>("CPU", "cpu");
  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_EQ(registered(), 1u);
  EXPECT_EQ(on(ThermalCall::kUnregister).calls(), 1);
  thermal_.SetSeverity("skin", ThrottlingSeverity::SEVERE);
  thermal_.SetSeverity("cpu", ThrottlingSeverity::LIGHT);
  EXPECT_EQ(seen_.Take(), (Call{2, 1}));
  RegisterAndHear<1>("SKIN", "skin", 3);
  EXPECT_EQ(registered(), 2u);
  EXPECT_TRUE(seen_.empty());
}

TEST_P(ThermalClientsTest, TheLastClientsDeregistrationWaitsForACallbackUnderWay) {
  Stall stall;
  ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", Stall::Callback, &stall), 0);
  ASSERT_TRUE(stall.gate.WaitForArrivals());
  std::atomic<bool> returned{false};
  std::thread client([&] {
    EXPECT_EQ(DeregisterThermalCallback(handle_, 1), 0);
    returned = true;
  });
  ASSERT_TRUE(on(ThermalCall::kUnregister).WaitForCalls(1));
  RegisterAndHear<2>("CPU", "cpu");  // once the lock is free
  EXPECT_FALSE(returned);
  stall.gate.Open();
  EndsInTime([&] { client.join(); });
}

TEST_P(ThermalClientsTest, ARefusedRegistrationWithTheServiceIsOnlyLogged) {
  on(ThermalCall::kRegister).Then(Outcome::Exception(EX_ILLEGAL_STATE, "full"));
  RegisterAndHear<1>("SKIN", "skin");
  EXPECT_EQ(
      log_.Count("RegisterCallbackToThermal: Failed to register thermal callback with type 3: "
                 "full"),
      1);
  EXPECT_EQ(registered(), 0u);
  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_THAT(Log(ANDROID_LOG_WARN),
              Contains(HasSubstr("DeregisterCallbackToThermal: Failed to unregister thermal "
                                 "callback: ")));
}

TEST_P(ThermalClientsTest, TheDumpListsTypesAndClients) {
  RegisterAndHear<7>("SKIN", "skin");
  RegisterAndHear<-1>("CPU", "cpu");
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

// Over HIDL a transport can fail on its own.
class ThermalHidlClientsTest : public ThermalFixture {
 protected:
  ThermalHidlClientsTest() { Bring(ThermalPath::kHidl); }

  void Fail(ThermalCall call) {
    ScriptOf(thermal_, ThermalPath::kHidl, call).Then({.status = STATUS_FAILED_TRANSACTION});
  }
};

TEST_F(ThermalHidlClientsTest, FailedTransactionsAreLogged) {
  Fail(ThermalCall::kQuery);
  EXPECT_EQ(Register<1>("SKIN", "skin"), -EINVAL);
  EXPECT_THAT(Log(ANDROID_LOG_WARN),
              ElementsAre(kNotDeclared, "AddClientCallback: Transaction failed."));
  Fail(ThermalCall::kRegister);
  RegisterAndHear<1>("SKIN", "skin");
  Fail(ThermalCall::kUnregister);
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  EXPECT_THAT(Log(ANDROID_LOG_WARN),
              ElementsAre(kNotDeclared, "AddClientCallback: Transaction failed.",
                          "RegisterCallbackToThermal: Transaction failed.",
                          "DeregisterCallbackToThermal: Transaction failed. "));
}

// Notifies from inside the registration, and waits until that has been handled.
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

TEST_F(ThermalEarlyTest, WhatIsNotifiedBeforeTheRegistrationHasReturnedIsDropped) {
  thermal_.Declare(ThermalPath::kAidl);
  fake::ServiceProcess process("thermal");
  process.AddService(ndk::SharedRefBase::make<HastyThermal>(thermal_.data()),
                     services::kThermalInstance);
  RegisterAndHear<1>("SKIN", "skin", 0);
  EXPECT_TRUE(seen_.empty());
  DeinitThermalInfo(&handle_);
}

}  // namespace
}  // namespace norvik::qel
