// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// HIDL callbacks on an AIDL thermal service.
#include "quorvel/fake/gate.h"
#include "quorvel/fake/hidl_service_manager.h"
#include "quorvel/fake/service_process.h"
#include "thermal_wrapper_fixture.h"

namespace norvik::qel {
namespace {

using aidl::android::hardware::thermal::Temperature;
using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using android::sp;
using fake::Gate;
using fake::Outcome;
using services::ThermalOperation;
using simulated::ThermalPath;

constexpr char kRegistered[] = "The callback was already registered through wrapper";
constexpr char kNotRegistered[] = "The callback was not registered through wrapper before";

class ThermalCallbackTest : public ThermalWrapperFixture {
 protected:
  using HidlCallback = V2_0::IThermalChangedCallback;

  HidlAnswer Register(const sp<HidlCallback>& callback, bool filter = false,
                      V2_0::TemperatureType type = V2_0::TemperatureType::SKIN) {
    HidlAnswer answer;
    EXPECT_TRUE(
        wrapper_->registerThermalChangedCallback(callback, filter, type, answer.Take()).isOk());
    EXPECT_EQ(answer.thread, std::this_thread::get_id());
    return answer;
  }
  HidlAnswer Unregister(const sp<HidlCallback>& callback) {
    HidlAnswer answer;
    EXPECT_TRUE(wrapper_->unregisterThermalChangedCallback(callback, answer.Take()).isOk());
    return answer;
  }
  void RegisterOk(const sp<HidlCallback>& callback) { ASSERT_TRUE(Succeeded(Register(callback))); }
  size_t registered() const { return thermal_.callback_count(ThermalPath::kAidl); }
  static Temperature Hot(const std::string& name, TemperatureType type = TemperatureType::SKIN) {
    return {
        .type = type, .name = name, .value = 45.5F, .throttlingStatus = ThrottlingSeverity::SEVERE};
  }
  // The service notifies, and the callback receives it.
  void ExpectNotified(HidlThermalCallback& callback) {
    thermal_.Notify(Hot("skin"));
    EXPECT_EQ(Take(callback), "skin");
  }
  // The name in the oldest notification.
  static std::string Take(HidlThermalCallback& callback) {
    const auto heard = callback.heard.Take();
    return heard ? std::string(heard->temperature.name) : "(nothing)";
  }

  const sp<HidlThermalCallback> callback_ = sp<HidlThermalCallback>::make();
};

TEST_F(ThermalCallbackTest, NotificationsAreConvertedOnABinderThread) {
  RegisterOk(callback_);
  thermal_.Notify(Hot("display", TemperatureType::DISPLAY));
  const auto heard = callback_->heard.Take();
  ASSERT_TRUE(heard);
  EXPECT_EQ(heard->temperature.type, V2_0::TemperatureType::UNKNOWN);
  EXPECT_EQ(heard->temperature.name, "display");
  EXPECT_EQ(heard->temperature.value, 45.5F);
  EXPECT_EQ(heard->temperature.throttlingStatus, V2_0::ThrottlingSeverity::SEVERE);
  EXPECT_EQ(heard->thread, "binder:host");
  EXPECT_TRUE(Succeeded(Unregister(callback_)));
  EXPECT_EQ(registered(), 0u);
  EXPECT_TRUE(FailedWith(Unregister(callback_), kNotRegistered));
  EXPECT_EQ(Calls(ThermalOperation::kUnregisterThermalChangedCallback), 1);
}

TEST_F(ThermalCallbackTest, AFilteredCallbackReceivesItsTypeAlone) {
  const auto batteries = sp<HidlThermalCallback>::make();
  const auto speakers = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(Succeeded(Register(callback_, false, V2_0::TemperatureType::BATTERY)));
  ASSERT_TRUE(Succeeded(Register(batteries, true, V2_0::TemperatureType::BATTERY)));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallback), 1);
  // A type that HIDL has no name for travels as the number it is.
  ASSERT_TRUE(Succeeded(
      Register(speakers, true, static_cast<V2_0::TemperatureType>(TemperatureType::SPEAKER))));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallbackWithType), 2);
  thermal_.Notify(Hot("skin"));
  thermal_.Notify(Hot("battery", TemperatureType::BATTERY));
  thermal_.Notify(Hot("speaker", TemperatureType::SPEAKER));
  EXPECT_EQ(Take(*callback_), "skin");
  EXPECT_EQ(Take(*callback_), "battery");
  EXPECT_EQ(Take(*batteries), "battery");
  EXPECT_EQ(Take(*speakers), "speaker");
}

TEST_F(ThermalCallbackTest, ADuplicateIsRefusedWithoutACallToTheService) {
  ASSERT_TRUE(Succeeded(Register(callback_, true, V2_0::TemperatureType::SKIN)));
  EXPECT_TRUE(FailedWith(Register(callback_), kRegistered));
  EXPECT_TRUE(FailedWith(Register(callback_, true, V2_0::TemperatureType::CPU), kRegistered));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallback), 0);
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallbackWithType), 1);
  thermal_.Notify(Hot("cpu", TemperatureType::CPU));
  ExpectNotified(*callback_);  // with the filter of the first registration
}

// Two proxies of one callback of another process are the same callback.
TEST_F(ThermalCallbackTest, CallbacksAreComparedAsInterfacesNotAsPointers) {
  constexpr char kInstance[] = "android.hardware.thermal@2.0::IThermalChangedCallback/default";
  fake::DeclareHidl(kInstance);
  fake::ServiceProcess client("client");
  ASSERT_TRUE(client.AddHidlService(callback_));
  const sp<HidlCallback> proxies[] = {HidlCallback::tryGetService(), HidlCallback::tryGetService()};
  ASSERT_NE(proxies[0], nullptr);
  ASSERT_NE(proxies[0], proxies[1]);
  EXPECT_TRUE(Succeeded(Register(proxies[0])));
  EXPECT_TRUE(FailedWith(Register(proxies[1]), kRegistered));
  ExpectNotified(*callback_);
  EXPECT_TRUE(Succeeded(Unregister(proxies[1])));
  EXPECT_EQ(registered(), 0u);
  fake::UndeclareHidl(kInstance);
}

TEST_F(ThermalCallbackTest, ARefusedCallMayBeTriedAgain) {
  thermal_.on(ThermalOperation::kRegisterThermalChangedCallback)
      .Then(Outcome::Exception(EX_ILLEGAL_STATE, "not yet"));
  EXPECT_TRUE(FailedWith(Register(callback_), "not yet"));
  EXPECT_TRUE(FailedWith(Unregister(callback_), kNotRegistered));
  EXPECT_TRUE(Succeeded(Register(callback_)));
  thermal_.on(ThermalOperation::kUnregisterThermalChangedCallback)
      .Then(Outcome::ServiceSpecific(1, "busy"));
  EXPECT_TRUE(FailedWith(Unregister(callback_), "busy"));
  EXPECT_TRUE(FailedWith(Register(callback_), kRegistered));
  EXPECT_TRUE(Succeeded(Unregister(callback_)));
  thermal_.Kill(ThermalPath::kAidl);
  EXPECT_TRUE(FailedWith(Register(callback_), ""));
}

// The lock is held from the search for a duplicate to the end of the result callback.
TEST_F(ThermalCallbackTest, RegistrationsWaitForEachOther) {
  const auto service = std::make_shared<Gate>();
  thermal_.on(ThermalOperation::kRegisterThermalChangedCallback).Then(Outcome::After(service));
  Gate result;
  Background first("a registration", [&] {
    EXPECT_TRUE(wrapper_
                    ->registerThermalChangedCallback(callback_, false, V2_0::TemperatureType::SKIN,
                                                     [&](const auto&) { result.Pass(); })
                    .isOk());
  });
  ASSERT_TRUE(service->WaitForArrivals());
  Seen<bool> refused;
  Background duplicate("a duplicate",
                       [&] { refused.Put(FailedWith(Register(callback_), kRegistered)); });
  // Can miss that the duplicate does not wait, never invent it.
  EXPECT_FALSE(refused.Take(std::chrono::milliseconds(20)));
  service->Open();
  ASSERT_TRUE(result.WaitForArrivals());
  EXPECT_FALSE(refused.Take(std::chrono::milliseconds(20)));
  result.Open();
  EXPECT_EQ(refused.Take(), true);
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallback), 1);
}

TEST_F(ThermalCallbackTest, NotificationsQueriesAndRefusedNullsNeedNoLock) {
  RegisterOk(callback_);
  const auto gate = std::make_shared<Gate>();
  thermal_.on(ThermalOperation::kUnregisterThermalChangedCallback).Then(Outcome::After(gate));
  Background unregistration("an unregistration",
                            [&] { EXPECT_TRUE(Succeeded(Unregister(callback_))); });
  ASSERT_TRUE(gate->WaitForArrivals());
  EndsInTime([&] {
    ExpectNotified(*callback_);
    EXPECT_FALSE(Temperatures().empty());
    EXPECT_TRUE(FailedWith(Register(nullptr), "Invalid nullptr callback"));
    EXPECT_TRUE(FailedWith(Unregister(nullptr), "Invalid nullptr callback"));
  });
  gate->Open();
}

// A callback that reports its end.
class Reporting : public HidlThermalCallback {
 public:
  Reporting(Seen<std::string>& ends, const char* name) : ends_(ends), name_(name) {}
  ~Reporting() override { ends_.Put(name_); }

 private:
  Seen<std::string>& ends_;
  const char* const name_;
};

TEST_F(ThermalCallbackTest, CallbacksStayInOrderAndTheLatestIsReleasedFirst) {
  Seen<std::string> ends;
  std::vector<sp<Reporting>> callbacks;
  for (const char* name : {"first", "second", "third", "fourth"}) {
    callbacks.push_back(sp<Reporting>::make(ends, name));
    RegisterOk(callbacks.back());
  }
  ASSERT_TRUE(Succeeded(Unregister(callbacks[1])));
  EXPECT_EQ(registered(), 3u);
  thermal_.Notify(Hot("skin"));
  for (const size_t i : {0, 2, 3}) EXPECT_EQ(Take(*callbacks[i]), "skin");
  EXPECT_TRUE(callbacks[1]->heard.empty());
  // From here on the wrapper alone holds them.
  thermal_.Kill(ThermalPath::kAidl);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  callbacks.clear();
  EXPECT_EQ(ends.Take(), "second");
  EXPECT_TRUE(ends.empty());
  wrapper_.clear();
  EXPECT_THAT(ends.TakeMany(3), testing::ElementsAre("fourth", "third", "first"));
}

TEST_F(ThermalCallbackTest, NotificationsContinueAfterTheWrapperHasEnded) {
  RegisterOk(callback_);
  wrapper_.clear();
  EXPECT_EQ(Calls(ThermalOperation::kUnregisterThermalChangedCallback), 0);
  ExpectNotified(*callback_);
}

class Failing : public HidlThermalCallback {
 public:
  android::hardware::Return<void> notifyThrottling(const Temperature& temperature) override {
    static_cast<void>(HidlThermalCallback::notifyThrottling(temperature).isOk());
    return android::hardware::Status::fromStatusT(android::DEAD_OBJECT);
  }
};

TEST_F(ThermalCallbackTest, ACallbackThatFailsIsNotifiedFurther) {
  const auto failing = sp<Failing>::make();
  RegisterOk(failing);
  for (int i = 0; i < 2; ++i) ExpectNotified(*failing);
}

// A service in the same process sees the answer to a notification, and may send one while a
// callback is being registered.
TEST_F(ThermalCallbackTest, TheServiceIsAnsweredOkWhenACallbackFails) {
  const auto local = ndk::SharedRefBase::make<LocalThermal>();
  wrapper_ = sp<ThermalHidlWrapper>::make(local);
  const auto failing = sp<Failing>::make();
  EXPECT_TRUE(Succeeded(Register(failing)));
  EXPECT_TRUE(local->notification_was_ok);
  EXPECT_EQ(Take(*failing), "early");
  // A registration that is refused without a status.
  local->status = [] { return ndk::ScopedAStatus(nullptr); };
  EXPECT_TRUE(FailedWith(Register(callback_), ""));
  EXPECT_TRUE(FailedWith(Unregister(failing), ""));
}

}  // namespace
}  // namespace norvik::qel
