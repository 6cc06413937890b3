// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The AIDL thermal interface, and the simulated phone's two thermal services.
#include <aidl/android/hardware/thermal/BnCoolingDeviceChangedCallback.h>
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
using aidl::android::hardware::thermal::BnCoolingDeviceChangedCallback;
using aidl::android::hardware::thermal::CoolingDevice;
using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::IThermal;
using aidl::android::hardware::thermal::Temperature;
using aidl::android::hardware::thermal::TemperatureThreshold;
using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using android::sp;
using fake::Outcome;
using services::ServiceEvent;
using services::ThermalOperation;
using simulated::ThermalPath;
using testing::SizeIs;

std::shared_ptr<IThermal> LookUpAidl() {
  return IThermal::fromBinder(
      ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance)));
}
sp<V2_0::IThermal> LookUpHidl() {
  return V2_0::IThermal::tryGetService();
}

class ThermalTest : public testing::Test {
 protected:
  ThermalTest() {
    thermal_.Declare(ThermalPath::kHidl);
    thermal_.Start(ThermalPath::kAidl);
    thermal_.Start(ThermalPath::kHidl);
  }
  ~ThermalTest() override { EXPECT_TRUE(fake::WaitUntilDelivered()); }

  Seen<ServiceEvent> events_;
  Seen<ServiceEvent> reports_;
  simulated::Thermal thermal_{[this](const ServiceEvent& event) {
    (event.kind == ServiceEvent::Kind::kReported ? reports_ : events_).Put(event);
  }};
};

class CoolingCallback : public BnCoolingDeviceChangedCallback {
 public:
  ndk::ScopedAStatus notifyCoolingDeviceChanged(const CoolingDevice& device) override {
    heard.Put(device);
    return ndk::ScopedAStatus::ok();
  }
  Seen<CoolingDevice> heard;
};

TEST_F(ThermalTest, AidlQueriesSelectByType) {
  const std::shared_ptr<IThermal> service = LookUpAidl();
  ASSERT_NE(service, nullptr);
  EXPECT_TRUE(service->isRemote());
  std::vector<Temperature> temperatures(2);
  ASSERT_TRUE(service->getTemperatures(&temperatures).isOk());
  EXPECT_EQ(temperatures, thermal_.data().temperatures);
  ASSERT_TRUE(service->getTemperaturesWithType(TemperatureType::SPEAKER, &temperatures).isOk());
  ASSERT_THAT(temperatures, SizeIs(1));
  EXPECT_EQ(temperatures[0].name, "speaker");
  std::vector<TemperatureThreshold> thresholds;
  ASSERT_TRUE(service->getTemperatureThresholds(&thresholds).isOk());
  EXPECT_THAT(thresholds, SizeIs(thermal_.data().thresholds.size()));
  ASSERT_TRUE(service->getTemperatureThresholdsWithType(TemperatureType::CPU, &thresholds).isOk());
  ASSERT_THAT(thresholds, SizeIs(1));
  EXPECT_THAT(thresholds[0].hotThrottlingThresholds, SizeIs(7));
  std::vector<CoolingDevice> devices;
  ASSERT_TRUE(service->getCoolingDevices(&devices).isOk());
  EXPECT_EQ(devices, thermal_.data().cooling_devices);
  ASSERT_TRUE(service->getCoolingDevicesWithType(CoolingType::FAN, &devices).isOk());
  EXPECT_THAT(devices, SizeIs(0));
  int32_t version = 0;
  EXPECT_TRUE(service->getInterfaceVersion(&version).isOk());
  EXPECT_EQ(version, 2);
}

TEST_F(ThermalTest, AidlCallbacksReceiveTheirTypeOnABinderThread) {
  const std::shared_ptr<IThermal> service = LookUpAidl();
  const auto all = ndk::SharedRefBase::make<AidlThermalCallback>();
  const auto skin = ndk::SharedRefBase::make<AidlThermalCallback>();
  ASSERT_TRUE(service->registerThermalChangedCallback(all).isOk());
  ASSERT_TRUE(service->registerThermalChangedCallbackWithType(skin, TemperatureType::SKIN).isOk());
  thermal_.SetSeverity("cpu", ThrottlingSeverity::LIGHT);
  thermal_.SetTemperature("skin", 41);  // no change of severity: not notified
  thermal_.SetSeverity("skin", ThrottlingSeverity::SEVERE);
  const Temperature hot_skin = {.type = TemperatureType::SKIN,
                                .name = "skin",
                                .value = 41,
                                .throttlingStatus = ThrottlingSeverity::SEVERE};
  const auto first = skin->heard.Take();
  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(first->temperature, hot_skin);
  EXPECT_EQ(first->thread, "binder:host");
  EXPECT_EQ(all->heard.Take()->temperature.name, "cpu");
  EXPECT_EQ(all->heard.Take()->temperature, hot_skin);

  // Numbers outside the list arrive as they are sent.
  thermal_.Notify({.type = static_cast<TemperatureType>(99)});
  EXPECT_EQ(all->heard.Take()->temperature.type, static_cast<TemperatureType>(99));

  EXPECT_TRUE(service->unregisterThermalChangedCallback(skin).isOk());
  thermal_.SetSeverity("skin", ThrottlingSeverity::NONE);
  EXPECT_EQ(all->heard.Take()->temperature.name, "skin");
  EXPECT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(skin->heard.empty());
}

TEST_F(ThermalTest, AidlRefusesKnownAndUnknownCallbacks) {
  const std::shared_ptr<IThermal> service = LookUpAidl();
  const auto callback = ndk::SharedRefBase::make<AidlThermalCallback>();
  const auto refused = [](const ndk::ScopedAStatus& status) {
    return status.getExceptionCode() == EX_ILLEGAL_ARGUMENT && *status.getMessage() != '\0';
  };
  EXPECT_TRUE(refused(service->unregisterThermalChangedCallback(callback)));
  ASSERT_TRUE(service->registerThermalChangedCallback(callback).isOk());
  EXPECT_TRUE(refused(service->registerThermalChangedCallback(callback)));
  EXPECT_TRUE(
      refused(service->registerThermalChangedCallbackWithType(callback, TemperatureType::CPU)));
  EXPECT_EQ(thermal_.callback_count(ThermalPath::kAidl), 1u);
  EXPECT_TRUE(refused(service->registerThermalChangedCallback(nullptr)));
  EXPECT_TRUE(
      refused(service->registerThermalChangedCallbackWithType(nullptr, TemperatureType::CPU)));
  EXPECT_TRUE(refused(service->registerCoolingDeviceChangedCallbackWithType(nullptr, {})));
  EXPECT_TRUE(refused(service->unregisterCoolingDeviceChangedCallback(nullptr)));

  const ThermalOperation operation = ThermalOperation::kUnregisterThermalChangedCallback;
  thermal_.on(operation).Then(Outcome::Exception(EX_ILLEGAL_STATE, "not ready"));
  const ndk::ScopedAStatus scripted = service->unregisterThermalChangedCallback(callback);
  EXPECT_EQ(scripted.getExceptionCode(), EX_ILLEGAL_STATE);
  EXPECT_STREQ(scripted.getMessage(), "not ready");
  EXPECT_EQ(thermal_.callback_count(ThermalPath::kAidl), 1u) << "still there";
  EXPECT_TRUE(refused(service->unregisterThermalChangedCallback(nullptr)));
  EXPECT_TRUE(service->unregisterThermalChangedCallback(callback).isOk());
  EXPECT_EQ(thermal_.on(operation).calls(), 4);
}

TEST_F(ThermalTest, AidlReportsCoolingDevices) {
  const std::shared_ptr<IThermal> service = LookUpAidl();
  const auto callback = ndk::SharedRefBase::make<CoolingCallback>();
  ASSERT_TRUE(
      service->registerCoolingDeviceChangedCallbackWithType(callback, CoolingType::SPEAKER).isOk());
  EXPECT_EQ(thermal_.cooling_callback_count(), 1u);
  thermal_.SetCooling("cpu", 4);
  thermal_.SetCooling("speaker", 2);
  const auto heard = callback->heard.Take();
  ASSERT_TRUE(heard.has_value());
  EXPECT_EQ(heard->name, "speaker");
  EXPECT_EQ(heard->value, 2);
  EXPECT_TRUE(service->unregisterCoolingDeviceChangedCallback(callback).isOk());
  EXPECT_EQ(service->unregisterCoolingDeviceChangedCallback(callback).getExceptionCode(),
            EX_ILLEGAL_ARGUMENT);
}

TEST_F(ThermalTest, HidlConvertsTheData) {
  const sp<V2_0::IThermal> service = LookUpHidl();
  HidlAnswer answer;
  std::vector<V2_0::Temperature> temperatures;
  const auto ask = [&](bool filter, V2_0::TemperatureType type) {
    EXPECT_TRUE(service->getCurrentTemperatures(filter, type, answer.Take(temperatures)).isOk());
  };
  thermal_.SetSeverity("skin", ThrottlingSeverity::CRITICAL);
  ask(true, V2_0::TemperatureType::SKIN);
  ASSERT_THAT(temperatures, SizeIs(1));
  EXPECT_EQ(temperatures[0].throttlingStatus, V2_0::ThrottlingSeverity::CRITICAL);
  ask(true, V2_0::TemperatureType::UNKNOWN);
  ASSERT_THAT(temperatures, SizeIs(1));
  EXPECT_EQ(temperatures[0].name, "speaker") << "a type that HIDL does not know";

  std::vector<V2_0::TemperatureThreshold> thresholds;
  ASSERT_TRUE(
      service->getTemperatureThresholds(true, V2_0::TemperatureType::SKIN, answer.Take(thresholds))
          .isOk());
  ASSERT_THAT(thresholds, SizeIs(1));
  EXPECT_EQ(thresholds[0].hotThrottlingThresholds[3], 45);
  EXPECT_TRUE(std::isnan(thresholds[0].coldThrottlingThresholds[6]));
  std::vector<V2_0::CoolingDevice> devices;
  ASSERT_TRUE(service->getCurrentCoolingDevices(false, {}, answer.Take(devices)).isOk());
  ASSERT_THAT(devices, SizeIs(3));
  EXPECT_EQ(devices[2].type, V2_0::CoolingType::COMPONENT);
}

TEST_F(ThermalTest, HidlCallbacksReceiveTheirType) {
  const sp<V2_0::IThermal> service = LookUpHidl();
  const auto skin = sp<HidlThermalCallback>::make();
  const auto all = sp<HidlThermalCallback>::make();
  HidlAnswer answer;
  const auto add = [&](const sp<HidlThermalCallback>& callback, bool filter) {
    EXPECT_TRUE(service
                    ->registerThermalChangedCallback(callback, filter, V2_0::TemperatureType::SKIN,
                                                     answer.Take())
                    .isOk());
    return static_cast<std::string>(answer.status.debugMessage);
  };
  EXPECT_EQ(add(skin, true), "");
  EXPECT_EQ(add(all, false), "");
  EXPECT_EQ(add(skin, false), "the callback is registered already");
  EXPECT_TRUE(answer.failed());
  EXPECT_EQ(add(nullptr, false), "the callback is null");
  EXPECT_EQ(thermal_.callback_count(ThermalPath::kHidl), 2u);
  thermal_.SetSeverity("cpu", ThrottlingSeverity::LIGHT);
  thermal_.SetSeverity("skin", ThrottlingSeverity::MODERATE);
  EXPECT_EQ(skin->heard.Take()->temperature.name, "skin");
  EXPECT_EQ(all->heard.Take()->temperature.name, "cpu");
  EXPECT_EQ(all->heard.Take()->temperature.throttlingStatus, V2_0::ThrottlingSeverity::MODERATE);
  ASSERT_TRUE(service->unregisterThermalChangedCallback(skin, answer.Take()).isOk());
  EXPECT_FALSE(answer.failed());
  ASSERT_TRUE(service->unregisterThermalChangedCallback(skin, answer.Take()).isOk());
  EXPECT_EQ(answer.status.debugMessage, "the callback is not registered");
  ASSERT_TRUE(service->unregisterThermalChangedCallback(nullptr, answer.Take()).isOk());
  EXPECT_TRUE(answer.failed());
  EXPECT_EQ(answer.status.debugMessage, "the callback is null");
}

TEST_F(ThermalTest, AnUnknownNameThrowsTheKnownOnes) {
  const auto message_of = [](const auto& action) -> std::string {
    try {
      action();
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return "nothing thrown";
  };
  EXPECT_THAT(message_of([&] { thermal_.SetTemperature("skni", 1); }),
              testing::StartsWith("no temperature \"skni\"; known are \"cpu\" \"skin\" "));
  EXPECT_EQ(message_of([&] { thermal_.SetCooling("fan", 1); }),
            "no cooling device \"fan\"; known are \"cpu\" \"battery\" \"speaker\"");
}

TEST_F(ThermalTest, EachServiceDiesAndRestartsAlone) {
  const auto callback = ndk::SharedRefBase::make<AidlThermalCallback>();
  const std::shared_ptr<IThermal> service = LookUpAidl();
  ASSERT_TRUE(service->registerThermalChangedCallback(callback).isOk());
  thermal_.Kill(ThermalPath::kAidl);
  std::vector<Temperature> temperatures;
  EXPECT_EQ(service->getTemperatures(&temperatures).getStatus(), STATUS_DEAD_OBJECT);
  EXPECT_EQ(LookUpAidl(), nullptr);
  EXPECT_TRUE(AServiceManager_isDeclared(services::kThermalInstance));
  EXPECT_TRUE(LookUpHidl()->ping().isOk()) << "the other one lives";
  thermal_.SetTemperature("cpu", 77);
  thermal_.Start(ThermalPath::kAidl);
  EXPECT_EQ(thermal_.callback_count(ThermalPath::kAidl), 0u) << "callbacks die with their service";
  ASSERT_TRUE(LookUpAidl()->getTemperatures(&temperatures).isOk());
  EXPECT_EQ(temperatures[0].value, 77) << "the state belongs to the phone";
  thermal_.Kill(ThermalPath::kHidl);
  EXPECT_EQ(LookUpHidl(), nullptr);
  EXPECT_NE(LookUpAidl(), nullptr);
}

TEST_F(ThermalTest, TheObserverReceivesTheEventsOfBothServices) {
  const auto expect = [&](ServiceEvent::Kind kind, const std::string& service,
                          const std::string& detail = {}) {
    const auto event = events_.Take();
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(event->kind, kind);
    EXPECT_EQ(event->service, service);
    EXPECT_EQ(event->detail, detail);
  };
  expect(ServiceEvent::Kind::kStarted, "thermal");
  expect(ServiceEvent::Kind::kStarted, "thermal (HIDL)");
  const auto callback = sp<HidlThermalCallback>::make();
  HidlAnswer answer;
  const sp<V2_0::IThermal> hidl = LookUpHidl();
  ASSERT_TRUE(hidl->registerThermalChangedCallback(callback, false, {}, answer.Take()).isOk());
  expect(ServiceEvent::Kind::kRegistered, "thermal (HIDL)");
  ASSERT_TRUE(hidl->registerThermalChangedCallback(callback, false, {}, answer.Take()).isOk());
  expect(ServiceEvent::Kind::kRefused, "thermal (HIDL)",
         "registerThermalChangedCallback: the callback is registered already");
  thermal_.on(ThermalOperation::kGetTemperatures).Then({.status = STATUS_FAILED_TRANSACTION});
  std::vector<Temperature> temperatures;
  EXPECT_FALSE(LookUpAidl()->getTemperatures(&temperatures).isOk());
  expect(ServiceEvent::Kind::kRefused, "thermal",
         "getTemperatures: Status(-129, EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '");
  thermal_.Kill(ThermalPath::kAidl);
  expect(ServiceEvent::Kind::kDied, "thermal");
}

TEST_F(ThermalTest, TheObserverReceivesEachChangeOnceAndTheStateAtTheStart) {
  const auto expect = [&](const std::string& service, const Temperature& temperature) {
    const auto event = reports_.Take();
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(event->service, service);
    ASSERT_TRUE(std::holds_alternative<Temperature>(event->report));
    EXPECT_EQ(std::get<Temperature>(event->report), temperature);
  };
  const auto expect_all = [&](const std::string& service) {
    for (const Temperature& temperature : thermal_.data().temperatures) {
      expect(service, temperature);
    }
  };
  expect_all("thermal");
  // A change of the value alone is one, and what stays as it is is none.
  thermal_.SetTemperature("skin", 36.5F);
  thermal_.SetTemperature("skin", 36.5F);
  thermal_.SetSeverity("skin", ThrottlingSeverity::LIGHT);
  Temperature skin = {.type = TemperatureType::SKIN, .name = "skin", .value = 36.5F};
  expect("thermal", skin);
  skin.throttlingStatus = ThrottlingSeverity::LIGHT;
  expect("thermal", skin);
  thermal_.Notify(skin);
  expect("thermal", skin);
  thermal_.Kill(ThermalPath::kAidl);
  thermal_.SetTemperature("skin", 36);
  skin.value = 36;
  expect("thermal (HIDL)", skin);
  thermal_.Start(ThermalPath::kAidl);  // the other one has told it all
  thermal_.Change([](simulated::Thermal::ThermalData& data) {
    data.temperatures.erase(data.temperatures.begin());
  });
  const auto event = reports_.Take();
  ASSERT_TRUE(event.has_value());
  ASSERT_TRUE(std::holds_alternative<services::TemperatureGone>(event->report));
  EXPECT_EQ(std::get<services::TemperatureGone>(event->report).name, "cpu");
}

TEST_F(ThermalTest, AThrottlingTemperatureThatIsRemovedIsReleased) {
  const auto aidl = ndk::SharedRefBase::make<AidlThermalCallback>();
  ASSERT_TRUE(LookUpAidl()->registerThermalChangedCallback(aidl).isOk());
  thermal_.SetSeverity("cpu", ThrottlingSeverity::SEVERE);
  EXPECT_EQ(aidl->heard.Take()->temperature.throttlingStatus, ThrottlingSeverity::SEVERE);
  thermal_.Change([](simulated::Thermal::ThermalData& data) { data.temperatures.clear(); });
  const Temperature released = aidl->heard.Take()->temperature;
  EXPECT_EQ(released.name, "cpu");
  EXPECT_EQ(released.throttlingStatus, ThrottlingSeverity::NONE);
  EXPECT_TRUE(std::isnan(released.value));
  EXPECT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(aidl->heard.empty()) << "for what did not throttle there is nothing to say";
}

TEST(AidlThermalTextTest, RecordsAndEnumsHaveNames) {
  int count = 0;
  for (const auto type : ndk::enum_range<TemperatureType>()) {
    EXPECT_EQ(static_cast<int>(type), count - 1);  // from UNKNOWN on without a gap
    EXPECT_NE(toString(type), std::to_string(count - 1));
    ++count;
  }
  EXPECT_EQ(count, 21);
  EXPECT_EQ(toString(static_cast<CoolingType>(77)), "77");
  const Temperature temperature = {.type = TemperatureType::POGO, .name = "pogo"};
  EXPECT_EQ(temperature.toString(),
            "Temperature{type: POGO, name: pogo, value: 0.000000, throttlingStatus: NONE}");
}

}  // namespace
}  // namespace norvik::qel
