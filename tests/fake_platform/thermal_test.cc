// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The simulated phone's two thermal services: filters, refusals and what their observer receives.
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "quorvel/fake/deliveries.h"
#include "quorvel/simulated/thermal.h"
#include "thermal_doubles.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

namespace V2_0 = android::hardware::thermal::V2_0;
using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::IThermal;
using aidl::android::hardware::thermal::Temperature;
using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using android::sp;
using services::ServiceEvent;
using services::ThermalOperation;
using simulated::ThermalPath;

// An event as one line: its kind, service and content.
std::string Text(const ServiceEvent& event) {
  static constexpr const char* kKinds[] = {"started", "died",   "registered", "unregistered",
                                           "refused", "notice", "reported"};
  std::string text = std::string(kKinds[static_cast<int>(event.kind)]) + " " + event.service;
  if (!event.detail.empty()) text += ": " + event.detail;
  if (const auto* temperature = std::get_if<Temperature>(&event.report)) {
    text += ": " + temperature->name + " " + std::to_string(std::lround(temperature->value)) + " " +
            toString(temperature->throttlingStatus);
  }
  if (const auto* gone = std::get_if<services::TemperatureGone>(&event.report)) {
    text += ": " + gone->name + " gone";
  }
  return text;
}

class ThermalTest : public testing::Test {
 protected:
  ThermalTest() {
    thermal_.Declare(ThermalPath::kHidl);
    thermal_.Start(ThermalPath::kAidl);
    thermal_.Start(ThermalPath::kHidl);
    aidl_ = IThermal::fromBinder(
        ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance)));
    hidl_ = V2_0::IThermal::tryGetService();
  }
  ~ThermalTest() override { EXPECT_TRUE(fake::WaitUntilDelivered()); }

  // Registers a callback. Returns whether the service accepted it.
  bool Add(const sp<HidlThermalCallback>& callback, bool filter = false) {
    HidlAnswer answer;
    return hidl_
               ->registerThermalChangedCallback(callback, filter, V2_0::TemperatureType::SKIN,
                                                answer.Take())
               .isOk() &&
           !answer.failed();
  }
  bool Remove(const sp<HidlThermalCallback>& callback) {
    HidlAnswer answer;
    return hidl_->unregisterThermalChangedCallback(callback, answer.Take()).isOk() &&
           !answer.failed();
  }

  Seen<std::string> events_;
  simulated::Thermal thermal_{[this](const ServiceEvent& event) { events_.Put(Text(event)); }};
  std::shared_ptr<IThermal> aidl_;
  sp<V2_0::IThermal> hidl_;
};

TEST_F(ThermalTest, CallbacksReceiveChangedSeveritiesOfTheirType) {
  const auto all = ndk::SharedRefBase::make<AidlThermalCallback>();
  const auto skin = ndk::SharedRefBase::make<AidlThermalCallback>();
  const auto hidl_all = sp<HidlThermalCallback>::make();
  const auto hidl_skin = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(aidl_->registerThermalChangedCallback(all).isOk());
  ASSERT_TRUE(aidl_->registerThermalChangedCallbackWithType(skin, TemperatureType::SKIN).isOk());
  ASSERT_TRUE(Add(hidl_all));
  ASSERT_TRUE(Add(hidl_skin, /*filter=*/true));
  thermal_.SetSeverity("cpu", ThrottlingSeverity::LIGHT);
  thermal_.SetTemperature("skin", 41);  // no change of severity: not notified
  thermal_.SetSeverity("skin", ThrottlingSeverity::SEVERE);
  const auto expect_heard = [](auto& on_all, auto& on_skin, const char* thread) {
    EXPECT_EQ(on_all.heard.Take()->temperature.name, "cpu");
    for (auto* const callback : {&on_all, &on_skin}) {
      const auto heard = callback->heard.Take();
      EXPECT_EQ(heard->temperature.value, 41);
      EXPECT_EQ(static_cast<int>(heard->temperature.throttlingStatus), 3);
      EXPECT_EQ(heard->thread, thread);
    }
  };
  expect_heard(*all, *skin, "binder:host");
  expect_heard(*hidl_all, *hidl_skin, "hwbinder:host");

  EXPECT_TRUE(aidl_->unregisterThermalChangedCallback(skin).isOk());
  // Removing a throttled temperature notifies its callbacks.
  thermal_.Change([](simulated::Thermal::ThermalData& data) { data.temperatures.clear(); });
  for (const char* name : {"cpu", "skin"}) {
    const Temperature released = all->heard.Take()->temperature;
    EXPECT_EQ(released.name, name);
    EXPECT_EQ(released.throttlingStatus, ThrottlingSeverity::NONE);
    EXPECT_TRUE(std::isnan(released.value));
  }
  EXPECT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(all->heard.empty());
  EXPECT_TRUE(skin->heard.empty());
}

TEST_F(ThermalTest, ServicesRefuseNullKnownAndUnknownCallbacks) {
  const auto callback = ndk::SharedRefBase::make<AidlThermalCallback>();
  ASSERT_TRUE(aidl_->registerThermalChangedCallback(callback).isOk());
  const ndk::ScopedAStatus refusals[] = {
      aidl_->registerThermalChangedCallback(callback),
      aidl_->registerThermalChangedCallbackWithType(callback, TemperatureType::CPU),
      aidl_->registerThermalChangedCallback(nullptr),
      aidl_->registerThermalChangedCallbackWithType(nullptr, TemperatureType::CPU),
      aidl_->registerCoolingDeviceChangedCallbackWithType(nullptr, CoolingType::CPU),
      aidl_->unregisterThermalChangedCallback(nullptr),
      aidl_->unregisterThermalChangedCallback(ndk::SharedRefBase::make<AidlThermalCallback>()),
      aidl_->unregisterCoolingDeviceChangedCallback(nullptr)};
  for (const ndk::ScopedAStatus& refusal : refusals) {
    EXPECT_EQ(refusal.getExceptionCode(), EX_ILLEGAL_ARGUMENT) << &refusal - refusals;
    EXPECT_STRNE(refusal.getMessage(), "") << &refusal - refusals;
  }
  EXPECT_EQ(thermal_.callback_count(ThermalPath::kAidl), 1u);
  EXPECT_EQ(thermal_.cooling_callback_count(), 0u);

  const auto hidl = sp<HidlThermalCallback>::make();
  EXPECT_FALSE(Remove(hidl));
  EXPECT_TRUE(Add(hidl, true));
  EXPECT_FALSE(Add(hidl) || Add(nullptr) || Remove(nullptr));
  EXPECT_EQ(thermal_.callback_count(ThermalPath::kHidl), 1u);
}

TEST_F(ThermalTest, TheObserverReceivesEachEventOnceAndTheStateAtTheStart) {
  const size_t count = thermal_.data().temperatures.size();
  const std::vector<std::string> start = events_.TakeMany(count + 2);
  ASSERT_THAT(start, testing::SizeIs(count + 2));
  EXPECT_EQ(start[0], "reported thermal: cpu 40 NONE");
  EXPECT_EQ(start[1], "reported thermal: skin 30 NONE");
  EXPECT_EQ(start[count], "started thermal");
  EXPECT_EQ(start[count + 1], "started thermal (HIDL)");

  const auto callback = sp<HidlThermalCallback>::make();
  EXPECT_TRUE(Add(callback));
  EXPECT_FALSE(Add(callback));
  thermal_.on(ThermalOperation::kGetTemperatures).Then({.status = STATUS_FAILED_TRANSACTION});
  std::vector<Temperature> out;
  EXPECT_FALSE(aidl_->getTemperatures(&out).isOk());
  thermal_.SetTemperature("skin", 36);
  thermal_.SetTemperature("skin", 36);  // no change
  EXPECT_THAT([&] { thermal_.SetTemperature("skni", 1); },
              testing::ThrowsMessage<std::invalid_argument>(
                  testing::StartsWith("no temperature \"skni\"; known are \"cpu\" \"skin\" ")));
  thermal_.Notify({.name = "nose"});
  thermal_.Kill(ThermalPath::kAidl);
  thermal_.SetSeverity("skin", ThrottlingSeverity::LIGHT);
  thermal_.Start(ThermalPath::kAidl);  // the HIDL service has reported all temperatures already
  thermal_.Change([](simulated::Thermal::ThermalData& data) {
    data.temperatures.erase(data.temperatures.begin());
  });
  EXPECT_THAT(
      events_.TakeMany(9),
      testing::ElementsAre(
          "registered thermal (HIDL)",
          "refused thermal (HIDL): registerThermalChangedCallback: the callback is registered "
          "already",
          "refused thermal: getTemperatures: Status(-129, EX_TRANSACTION_FAILED): "
          "'FAILED_TRANSACTION: '",
          "reported thermal: skin 36 NONE", "reported thermal: nose 0 NONE", "died thermal",
          "reported thermal (HIDL): skin 36 LIGHT", "started thermal",
          "reported thermal: cpu gone"));
  EXPECT_TRUE(events_.empty());
}

}  // namespace
}  // namespace norvik::qel
