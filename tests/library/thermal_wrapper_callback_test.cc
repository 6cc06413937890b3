// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// HIDL callbacks on an AIDL thermal service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "environment.h"
#include "local_thermal.h"
#include "quorvel/fake/gate.h"
#include "quorvel/fake/hidl_service_manager.h"
#include "quorvel/fake/service_process.h"
#include "thermal_wrapper_fixture.h"

namespace norvik::qel {
namespace {

namespace V2_0 = android::hardware::thermal::V2_0;
using aidl::android::hardware::thermal::Temperature;
using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using android::sp;
using android::hardware::Return;
using android::hardware::Status;
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
  size_t registered() const { return thermal_.callback_count(ThermalPath::kAidl); }
  static Temperature Hot(const std::string& name, TemperatureType type = TemperatureType::SKIN) {
    return {
        .type = type, .name = name, .value = 45.5F, .throttlingStatus = ThrottlingSeverity::SEVERE};
  }
  // The name in the oldest notification.
  static std::string Take(HidlThermalCallback& callback) {
    const auto heard = callback.heard.Take();
    return heard ? std::string(heard->temperature.name) : "(nothing)";
  }
};

TEST_F(ThermalCallbackTest, NotificationsComeConvertedOnAnotherThread) {
  const auto callback = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(Succeeded(Register(callback)));
  thermal_.Notify(Hot("display", TemperatureType::DISPLAY));
  const auto heard = callback->heard.Take();
  ASSERT_TRUE(heard);
  EXPECT_EQ(heard->temperature.type, V2_0::TemperatureType::UNKNOWN);
  EXPECT_EQ(heard->temperature.name, "display");
  EXPECT_EQ(heard->temperature.value, 45.5F);
  EXPECT_EQ(heard->temperature.throttlingStatus, V2_0::ThrottlingSeverity::SEVERE);
  EXPECT_EQ(heard->thread, "binder:host");
  EXPECT_TRUE(Succeeded(Unregister(callback)));
  EXPECT_EQ(registered(), 0u);
  EXPECT_TRUE(FailedWith(Unregister(callback), kNotRegistered));
  EXPECT_EQ(Calls(ThermalOperation::kUnregisterThermalChangedCallback), 1);
}

TEST_F(ThermalCallbackTest, AFilterGoesToTheServiceAndOnlyItsTypeComesBack) {
  const auto all = sp<HidlThermalCallback>::make();
  const auto batteries = sp<HidlThermalCallback>::make();
  const auto speakers = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(Succeeded(Register(all, false, V2_0::TemperatureType::BATTERY)));
  ASSERT_TRUE(Succeeded(Register(batteries, true, V2_0::TemperatureType::BATTERY)));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallback), 1);
  // A type that HIDL has no name for travels as the number it is.
  ASSERT_TRUE(Succeeded(
      Register(speakers, true, static_cast<V2_0::TemperatureType>(TemperatureType::SPEAKER))));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallbackWithType), 2);
  thermal_.Notify(Hot("skin"));
  thermal_.Notify(Hot("battery", TemperatureType::BATTERY));
  thermal_.Notify(Hot("speaker", TemperatureType::SPEAKER));
  EXPECT_EQ(Take(*all), "skin");
  EXPECT_EQ(Take(*all), "battery");
  EXPECT_EQ(Take(*batteries), "battery");
  EXPECT_EQ(Take(*speakers), "speaker");
}

TEST_F(ThermalCallbackTest, ADuplicateIsRefusedBeforeTheServiceHearsOfIt) {
  const auto callback = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(Succeeded(Register(callback, true, V2_0::TemperatureType::SKIN)));
  EXPECT_TRUE(FailedWith(Register(callback), kRegistered));
  EXPECT_TRUE(FailedWith(Register(callback, true, V2_0::TemperatureType::CPU), kRegistered));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallback), 0);
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallbackWithType), 1);
  thermal_.Notify(Hot("cpu", TemperatureType::CPU));
  thermal_.Notify(Hot("skin"));
  EXPECT_EQ(Take(*callback), "skin");  // with the filter of the first registration
}

// Two proxies of one callback of another process are the same callback.
TEST_F(ThermalCallbackTest, CallbacksAreComparedAsInterfacesNotAsPointers) {
  constexpr char kInstance[] = "android.hardware.thermal@2.0::IThermalChangedCallback/default";
  fake::DeclareHidl(kInstance);
  fake::ServiceProcess client("client");
  const auto callback = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(client.AddHidlService(callback));
  const sp<HidlCallback> proxies[] = {HidlCallback::tryGetService(), HidlCallback::tryGetService()};
  ASSERT_NE(proxies[0], nullptr);
  ASSERT_NE(proxies[0], proxies[1]);
  EXPECT_TRUE(Succeeded(Register(proxies[0])));
  EXPECT_TRUE(FailedWith(Register(proxies[1]), kRegistered));
  thermal_.Notify(Hot("skin"));
  EXPECT_EQ(Take(*callback), "skin");
  EXPECT_TRUE(Succeeded(Unregister(proxies[1])));
  EXPECT_EQ(registered(), 0u);
  fake::UndeclareHidl(kInstance);
}

TEST_F(ThermalCallbackTest, WhatTheServiceRefusesMayBeTriedAgain) {
  const auto callback = sp<HidlThermalCallback>::make();
  thermal_.on(ThermalOperation::kRegisterThermalChangedCallback)
      .Then(Outcome::Exception(EX_ILLEGAL_STATE, "not yet"));
  EXPECT_TRUE(FailedWith(Register(callback), "not yet"));
  EXPECT_TRUE(FailedWith(Unregister(callback), kNotRegistered));
  EXPECT_TRUE(Succeeded(Register(callback)));
  thermal_.on(ThermalOperation::kUnregisterThermalChangedCallback)
      .Then(Outcome::ServiceSpecific(1, "busy"));
  EXPECT_TRUE(FailedWith(Unregister(callback), "busy"));
  EXPECT_TRUE(FailedWith(Register(callback), kRegistered));
  EXPECT_TRUE(Succeeded(Unregister(callback)));
  thermal_.Kill(ThermalPath::kAidl);
  EXPECT_TRUE(FailedWith(Register(callback), ""));
}

// The lock is held from the search for a duplicate to the end of the result callback.
TEST_F(ThermalCallbackTest, RegistrationsWaitForEachOther) {
  const auto service = std::make_shared<Gate>();
  thermal_.on(ThermalOperation::kRegisterThermalChangedCallback).Then(Outcome::After(service));
  const auto callback = sp<HidlThermalCallback>::make();
  const auto result = std::make_shared<Gate>();
  auto first = std::async(std::launch::async, [&] {
    return wrapper_
        ->registerThermalChangedCallback(callback, false, V2_0::TemperatureType::SKIN,
                                         [&](const auto&) { result->Pass(); })
        .isOk();
  });
  ASSERT_TRUE(service->WaitForArrivals());
  auto duplicate = std::async(std::launch::async, [&] { return Register(callback); });
  // Can miss that somebody does not wait, never invent it.
  EXPECT_EQ(duplicate.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  service->Open();
  ASSERT_TRUE(result->WaitForArrivals());
  EXPECT_EQ(duplicate.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  result->Open();
  EXPECT_TRUE(first.get());
  EXPECT_TRUE(FailedWith(duplicate.get(), kRegistered));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallback), 1);
}

TEST_F(ThermalCallbackTest, NoCallbackIsRefusedEvenWhileTheLockIsHeld) {
  const auto gate = std::make_shared<Gate>();
  thermal_.on(ThermalOperation::kRegisterThermalChangedCallback).Then(Outcome::After(gate));
  const auto callback = sp<HidlThermalCallback>::make();
  std::thread holder([&] { EXPECT_TRUE(Succeeded(Register(callback))); });
  ASSERT_TRUE(gate->WaitForArrivals());
  auto refusals = std::async(std::launch::async, [this] {
    return FailedWith(Register(nullptr), "Invalid nullptr callback") &&
           FailedWith(Unregister(nullptr), "Invalid nullptr callback");
  });
  EXPECT_EQ(refusals.wait_for(kHangGuard), std::future_status::ready);
  gate->Open();
  holder.join();
  EXPECT_TRUE(refusals.get());
}

TEST_F(ThermalCallbackTest, NotificationsNeedNoLock) {
  const auto first = sp<HidlThermalCallback>::make();
  const auto second = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(Succeeded(Register(first)));
  const auto gate = std::make_shared<Gate>();
  thermal_.on(ThermalOperation::kUnregisterThermalChangedCallback).Then(Outcome::After(gate));
  std::thread unregistration([&] { EXPECT_TRUE(Succeeded(Unregister(first))); });
  ASSERT_TRUE(gate->WaitForArrivals());
  thermal_.Notify(Hot("skin"));
  EXPECT_EQ(Take(*first), "skin");
  gate->Open();
  unregistration.join();
}

// A callback that tells when it goes.
class Mortal : public HidlThermalCallback {
 public:
  explicit Mortal(std::function<void()> at_end) : at_end_(std::move(at_end)) {}
  ~Mortal() override { at_end_(); }

 private:
  const std::function<void()> at_end_;
};

TEST_F(ThermalCallbackTest, TheOthersStayInOrderAndTheLatestGoesFirst) {
  Seen<std::string> gone;
  std::vector<sp<Mortal>> callbacks;
  for (const char* name : {"first", "second", "third", "fourth"}) {
    callbacks.push_back(sp<Mortal>::make([&gone, name] { gone.Put(name); }));
    ASSERT_TRUE(Succeeded(Register(callbacks.back())));
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
  EXPECT_EQ(gone.Take(), "second");
  EXPECT_TRUE(gone.empty());
  wrapper_.clear();
  for (const char* name : {"fourth", "third", "first"}) EXPECT_EQ(gone.Take(), name);
}

TEST_F(ThermalCallbackTest, NotificationsGoOnWhenTheWrapperIsGone) {
  const auto callback = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(Succeeded(Register(callback)));
  wrapper_.clear();
  EXPECT_EQ(Calls(ThermalOperation::kUnregisterThermalChangedCallback), 0);
  thermal_.Notify(Hot("skin"));
  EXPECT_EQ(Take(*callback), "skin");
}

class Failing : public HidlThermalCallback {
 public:
  Return<void> notifyThrottling(const Temperature& temperature) override {
    Return<void> heard = HidlThermalCallback::notifyThrottling(temperature);
    return Status::fromStatusT(android::DEAD_OBJECT);
  }
};

// A service in the same process sees the answer to a notification, and may send one while a
// callback is being registered.
TEST_F(ThermalCallbackTest, TheServiceAlwaysHearsThatAllIsWell) {
  const auto local = ndk::SharedRefBase::make<LocalThermal>();
  wrapper_ = sp<ThermalHidlWrapper>::make(local);
  const auto failing = sp<Failing>::make();
  EXPECT_TRUE(Succeeded(Register(failing)));
  EXPECT_TRUE(local->notification_was_ok);
  EXPECT_EQ(Take(*failing), "early");
  // A registration that is refused without a status.
  local->status = [] { return ndk::ScopedAStatus(nullptr); };
  EXPECT_TRUE(FailedWith(Register(sp<HidlThermalCallback>::make()), ""));
  EXPECT_TRUE(FailedWith(Unregister(failing), ""));
}

TEST_F(ThermalCallbackTest, AClientThatFailsHarmsNobody) {
  const auto failing = sp<Failing>::make();
  ASSERT_TRUE(Succeeded(Register(failing)));
  for (const char* name : {"one", "two"}) {
    thermal_.Notify(Hot(name));
    EXPECT_EQ(Take(*failing), name);
  }
}

TEST_F(ThermalCallbackTest, ManyThreadsMayRegisterWhileTheServiceNotifies) {
  constexpr int kRounds = kSanitized ? 50 : 300;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      const auto callback = sp<HidlThermalCallback>::make();
      for (int round = 0; round < kRounds; ++round) {
        EXPECT_TRUE(Succeeded(Register(callback)));
        HidlAnswer answer;
        std::vector<V2_0::Temperature> temperatures;
        EXPECT_TRUE(wrapper_
                        ->getCurrentTemperatures(false, V2_0::TemperatureType::SKIN,
                                                 answer.Take(temperatures))
                        .isOk());
        EXPECT_FALSE(temperatures.empty());
        EXPECT_TRUE(Succeeded(Unregister(callback)));
      }
    });
  }
  for (int round = 0; round < kRounds; ++round) thermal_.Notify(Hot("skin"));
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(registered(), 0u);
}

}  // namespace
}  // namespace norvik::qel
