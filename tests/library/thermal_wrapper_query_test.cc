// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The HIDL wrapper's queries, their records and their failures.
#include <cutils/native_handle.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "local_thermal.h"
#include "thermal_wrapper_fixture.h"

// What `debug` hands to the service it leaves to it, deliberately; nothing else may leak.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "leak:ThermalHidlWrapper::debug\n";
}

namespace norvik::qel {
namespace {

namespace V1_0 = android::hardware::thermal::V1_0;
namespace V2_0 = android::hardware::thermal::V2_0;
using aidl::android::hardware::thermal::CoolingDevice;
using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::Temperature;
using aidl::android::hardware::thermal::TemperatureThreshold;
using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using fake::Outcome;
using services::ThermalOperation;
using simulated::ThermalPath;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

uint32_t Bits(float value) {
  return std::bit_cast<uint32_t>(value);
}

class ThermalQueryTest : public ThermalWrapperFixture {
 protected:
  std::vector<V2_0::Temperature> Temperatures(
      bool filter = false, V2_0::TemperatureType type = V2_0::TemperatureType::UNKNOWN) {
    std::vector<V2_0::Temperature> reply;
    HidlAnswer answer;
    EXPECT_TRUE(wrapper_->getCurrentTemperatures(filter, type, answer.Take(reply)).isOk());
    EXPECT_TRUE(Succeeded(answer));
    EXPECT_EQ(answer.thread, std::this_thread::get_id());
    return reply;
  }
  std::vector<V2_0::TemperatureThreshold> Thresholds(
      bool filter = false, V2_0::TemperatureType type = V2_0::TemperatureType::UNKNOWN) {
    std::vector<V2_0::TemperatureThreshold> reply;
    HidlAnswer answer;
    EXPECT_TRUE(wrapper_->getTemperatureThresholds(filter, type, answer.Take(reply)).isOk());
    EXPECT_TRUE(Succeeded(answer));
    return reply;
  }
  std::vector<V2_0::CoolingDevice> Coolers(bool filter = false,
                                           V2_0::CoolingType type = V2_0::CoolingType::FAN) {
    std::vector<V2_0::CoolingDevice> reply;
    HidlAnswer answer;
    EXPECT_TRUE(wrapper_->getCurrentCoolingDevices(filter, type, answer.Take(reply)).isOk());
    EXPECT_TRUE(Succeeded(answer));
    return reply;
  }
  // All three queries; none gives a record.
  std::vector<HidlAnswer> AskAll(bool filter) {
    std::vector<HidlAnswer> answers(3);
    std::vector<V2_0::Temperature> temperatures(1);
    std::vector<V2_0::TemperatureThreshold> thresholds(1);
    std::vector<V2_0::CoolingDevice> coolers(1);
    EXPECT_TRUE(wrapper_
                    ->getCurrentTemperatures(filter, V2_0::TemperatureType::SKIN,
                                             answers[0].Take(temperatures))
                    .isOk());
    EXPECT_TRUE(wrapper_
                    ->getTemperatureThresholds(filter, V2_0::TemperatureType::SKIN,
                                               answers[1].Take(thresholds))
                    .isOk());
    EXPECT_TRUE(
        wrapper_->getCurrentCoolingDevices(filter, V2_0::CoolingType::CPU, answers[2].Take(coolers))
            .isOk());
    EXPECT_TRUE(temperatures.empty() && thresholds.empty() && coolers.empty());
    return answers;
  }
};

TEST_F(ThermalQueryTest, TheQueriesOfHidl1AreRefusedWithoutAskingTheService) {
  constexpr char kMessage[] = "Operation unsupported by Thermal HIDL wrapper";
  // Not even a service is needed.
  for (const auto& wrapper : {wrapper_, android::sp<ThermalHidlWrapper>::make(nullptr)}) {
    std::vector<V1_0::Temperature> temperatures(1);
    std::vector<V1_0::CpuUsage> usages(1);
    std::vector<V1_0::CoolingDevice> coolers(1);
    HidlAnswer answers[3];
    EXPECT_TRUE(wrapper->getTemperatures(answers[0].Take(temperatures)).isOk());
    EXPECT_TRUE(wrapper->getCpuUsages(answers[1].Take(usages)).isOk());
    EXPECT_TRUE(wrapper->getCoolingDevices(answers[2].Take(coolers)).isOk());
    for (const HidlAnswer& answer : answers) EXPECT_TRUE(FailedWith(answer, kMessage));
    EXPECT_TRUE(temperatures.empty() && usages.empty() && coolers.empty());
  }
  for (int operation = 0; operation < static_cast<int>(ThermalOperation::kCount); ++operation) {
    EXPECT_EQ(Calls(static_cast<ThermalOperation>(operation)), 0) << operation;
  }
}

TEST_F(ThermalQueryTest, TemperaturesKeepAllButATypeThatHidlDoesNotKnow) {
  const struct {
    int32_t aidl;
    int32_t hidl;
  } kTypes[] = {{INT32_MIN, -1}, {-2, -1}, {-1, -1}, {0, 0},   {3, 3},         {8, 8},
                {9, 9},          {10, -1}, {12, -1}, {19, -1}, {INT32_MAX, -1}};
  // Severities as they are, known or not; values bit for bit, a NaN of its own kind among them.
  const int32_t kSeverities[] = {0, 1, 6, 7, -1, INT32_MIN};
  const uint32_t kValues[] = {Bits(36.5F), Bits(-0.0F), 0x7fa12345, 0xffc00001, 0xff800000, 1};
  thermal_.Change([&](auto& data) {
    data.temperatures.clear();
    for (size_t i = 0; i < std::size(kTypes); ++i) {
      data.temperatures.push_back(
          {.type = static_cast<TemperatureType>(kTypes[i].aidl),
           .name = i == 0 ? "" : "sensor " + std::to_string(i) + " \xc2\xb0",
           .value = std::bit_cast<float>(kValues[i % std::size(kValues)]),
           .throttlingStatus =
               static_cast<ThrottlingSeverity>(kSeverities[i % std::size(kSeverities)])});
    }
  });
  const std::vector<V2_0::Temperature> reply = Temperatures();
  ASSERT_EQ(reply.size(), std::size(kTypes));
  for (size_t i = 0; i < reply.size(); ++i) {
    EXPECT_EQ(static_cast<int32_t>(reply[i].type), kTypes[i].hidl) << kTypes[i].aidl;
    EXPECT_EQ(reply[i].name, i == 0 ? "" : "sensor " + std::to_string(i) + " \xc2\xb0");
    EXPECT_EQ(Bits(reply[i].value), kValues[i % std::size(kValues)]);
    EXPECT_EQ(static_cast<int32_t>(reply[i].throttlingStatus),
              kSeverities[i % std::size(kSeverities)]);
  }
}

TEST_F(ThermalQueryTest, ThresholdsAreSevenOfEachWhateverTheServiceGives) {
  const std::vector<float> full = {1, 2, 3, 4, 5, 6, 7};
  const std::vector<float> cold = {-1, kNan, -3, -4, -5, -6, -7};
  thermal_.Change([&](auto& data) {
    using Type = TemperatureType;
    data.thresholds = {{.type = Type::SKIN,
                        .name = "full",
                        .hotThrottlingThresholds = full,
                        .coldThrottlingThresholds = cold},
                       {.type = Type::TPU,
                        .name = "short",
                        .hotThrottlingThresholds = {1, 2, 3},
                        .coldThrottlingThresholds = {}},
                       {.type = Type::NPU,
                        .name = "long",
                        .hotThrottlingThresholds = {1, 2, 3, 4, 5, 6, 7, 8, 9},
                        .coldThrottlingThresholds = full}};
  });
  const std::vector<V2_0::TemperatureThreshold> reply = Thresholds();
  ASSERT_EQ(reply.size(), 3u);
  const auto expect = [](const auto& array, const std::vector<float>& values) {
    ASSERT_EQ(array.size(), 7u);
    for (size_t i = 0; i < 7; ++i) {
      EXPECT_EQ(Bits(array[i]), Bits(i < values.size() ? values[i] : kNan)) << i;
    }
  };
  expect(reply[0].hotThrottlingThresholds, full);
  expect(reply[0].coldThrottlingThresholds, cold);
  expect(reply[1].hotThrottlingThresholds, {1, 2, 3});
  expect(reply[1].coldThrottlingThresholds, {});
  expect(reply[2].hotThrottlingThresholds, full);
  expect(reply[2].coldThrottlingThresholds, full);
  EXPECT_EQ(reply[0].type, V2_0::TemperatureType::SKIN);
  EXPECT_EQ(reply[1].type, V2_0::TemperatureType::UNKNOWN);
  EXPECT_EQ(reply[2].type, V2_0::TemperatureType::NPU);
  EXPECT_EQ(reply[2].name, "long");
  for (const auto& threshold : reply) EXPECT_EQ(Bits(threshold.vrThrottlingThreshold), 0x7fc00000u);
}

TEST_F(ThermalQueryTest, CoolingDevicesOfUnknownTypesAreComponents) {
  const int32_t kTypes[] = {-1, 0, 5, 6, 7, 10, 14, INT32_MIN};
  const int64_t kValues[] = {0, 1, -1, INT64_MIN, INT64_MAX, 7, 8, 9};
  thermal_.Change([&](auto& data) {
    data.cooling_devices.clear();
    for (size_t i = 0; i < std::size(kTypes); ++i) {
      CoolingDevice device;
      device.type = static_cast<CoolingType>(kTypes[i]);
      device.name = std::to_string(i);
      device.value = kValues[i];
      data.cooling_devices.push_back(device);
    }
  });
  const std::vector<V2_0::CoolingDevice> reply = Coolers();
  std::vector<uint32_t> types;
  for (const auto& device : reply) types.push_back(static_cast<uint32_t>(device.type));
  EXPECT_THAT(types, ElementsAre(6, 0, 5, 6, 6, 6, 6, 6));
  for (size_t i = 0; i < reply.size(); ++i) {
    EXPECT_EQ(reply[i].name, std::to_string(i));
    EXPECT_EQ(reply[i].value, static_cast<uint64_t>(kValues[i]));
  }
}

TEST_F(ThermalQueryTest, TheFilterIsTheServicesBusiness) {
  const auto names = [](const auto& records) {
    std::vector<std::string> names;
    for (const auto& record : records) names.push_back(record.name);
    return names;
  };
  // A type that HIDL has no name for travels as the number it is.
  const auto speaker = static_cast<V2_0::TemperatureType>(TemperatureType::SPEAKER);
  EXPECT_THAT(names(Temperatures(true, speaker)), ElementsAre("speaker"));
  EXPECT_THAT(names(Temperatures(true, V2_0::TemperatureType::SKIN)), ElementsAre("skin"));
  EXPECT_EQ(Temperatures(false, V2_0::TemperatureType::SKIN).size(),
            thermal_.data().temperatures.size());
  EXPECT_THAT(Temperatures(true, V2_0::TemperatureType::NPU), IsEmpty());
  EXPECT_EQ(Calls(ThermalOperation::kGetTemperatures), 1);
  EXPECT_EQ(Calls(ThermalOperation::kGetTemperaturesWithType), 3);

  thermal_.Change([](auto& data) {
    data.thresholds.resize(3);
    data.thresholds[0] = {.type = TemperatureType::CPU, .name = "cpu"};
    data.thresholds[1] = {.type = TemperatureType::SKIN, .name = "skin"};
    data.thresholds[2] = {.type = TemperatureType::SPEAKER, .name = "speaker"};
  });
  EXPECT_THAT(names(Thresholds(true, V2_0::TemperatureType::SKIN)), ElementsAre("skin"));
  EXPECT_THAT(names(Thresholds(true, speaker)), ElementsAre("speaker"));
  EXPECT_THAT(names(Thresholds(false, V2_0::TemperatureType::SKIN)),
              ElementsAre("cpu", "skin", "speaker"));
  EXPECT_THAT(names(Coolers(true, V2_0::CoolingType::CPU)), ElementsAre("cpu"));
  EXPECT_THAT(names(Coolers(true, static_cast<V2_0::CoolingType>(CoolingType::SPEAKER))),
              ElementsAre("speaker"));
  EXPECT_EQ(Coolers(false, V2_0::CoolingType::CPU).size(), thermal_.data().cooling_devices.size());
}

TEST_F(ThermalQueryTest, AFailureOfTheServiceIsAStatusWithItsMessage) {
  const ThermalOperation kPlain[] = {ThermalOperation::kGetTemperatures,
                                     ThermalOperation::kGetTemperatureThresholds,
                                     ThermalOperation::kGetCoolingDevices};
  const ThermalOperation kFiltered[] = {ThermalOperation::kGetTemperaturesWithType,
                                        ThermalOperation::kGetTemperatureThresholdsWithType,
                                        ThermalOperation::kGetCoolingDevicesWithType};
  for (const ThermalOperation operation : kPlain) {
    thermal_.on(operation).Then(Outcome::Exception(EX_ILLEGAL_STATE, "not yet"));
  }
  for (const HidlAnswer& answer : AskAll(false)) EXPECT_TRUE(FailedWith(answer, "not yet"));
  for (const ThermalOperation operation : kFiltered) {
    thermal_.on(operation).Then(Outcome::ServiceSpecific(-7, "sensor bus"));
  }
  for (const HidlAnswer& answer : AskAll(true)) EXPECT_TRUE(FailedWith(answer, "sensor bus"));
  thermal_.Kill(ThermalPath::kAidl);
  for (const HidlAnswer& answer : AskAll(false)) EXPECT_TRUE(FailedWith(answer, ""));
}

// A service may have written half an answer when it fails, or give no status at all.
TEST_F(ThermalQueryTest, NothingOfAFailedAnswerIsShown) {
  const auto local = ndk::SharedRefBase::make<LocalThermal>();
  wrapper_ = android::sp<ThermalHidlWrapper>::make(local);
  EXPECT_EQ(Temperatures().size(), 2u);
  local->status = [] {
    return ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "half");
  };
  for (const HidlAnswer& answer : AskAll(false)) EXPECT_TRUE(FailedWith(answer, "half"));
  local->status = [] { return ndk::ScopedAStatus(nullptr); };
  for (const HidlAnswer& answer : AskAll(true)) EXPECT_TRUE(FailedWith(answer, ""));
}

TEST_F(ThermalQueryTest, AQueryTakesNoLock) {
  HidlAnswer registration;
  EXPECT_TRUE(wrapper_
                  ->getCurrentTemperatures(
                      false, V2_0::TemperatureType::SKIN,
                      [&](const auto&, const auto&) {
                        // Would wait for itself.
                        EXPECT_TRUE(wrapper_
                                        ->registerThermalChangedCallback(
                                            android::sp<HidlThermalCallback>::make(), false,
                                            V2_0::TemperatureType::SKIN, registration.Take())
                                        .isOk());
                      })
                  .isOk());
  EXPECT_TRUE(Succeeded(registration));
}

TEST_F(ThermalQueryTest, DebugHandsDescriptorAndOptionsToTheServiceForGood) {
  const auto local = ndk::SharedRefBase::make<LocalThermal>();
  wrapper_ = android::sp<ThermalHidlWrapper>::make(local);
  native_handle_t* const native = native_handle_create(/*numFds=*/2, /*numInts=*/0);
  native->data[0] = 11;
  native->data[1] = 12;
  {
    const hidl_vec<hidl_string> options = {"--all", "", "two words"};
    EXPECT_TRUE(wrapper_->debug(hidl_handle(native), options).isOk());
  }
  EXPECT_EQ(local->dump_descriptor, 11);
  EXPECT_THAT(local->dump_arguments, ElementsAre(StrEq("--all"), StrEq(""), StrEq("two words")));
  EXPECT_TRUE(wrapper_->debug(hidl_handle(native), {}).isOk());
  EXPECT_THAT(local->dump_arguments, IsEmpty());
  EXPECT_EQ(local->dumps, 2);
  // Without a descriptor, or without a handle, nobody is asked.
  for (const int count : {0, -1}) {
    native->numFds = count;
    EXPECT_TRUE(wrapper_->debug(hidl_handle(native), {"a"}).isOk());
  }
  EXPECT_TRUE(wrapper_->debug(hidl_handle(), {"a"}).isOk());
  EXPECT_EQ(local->dumps, 2);
  native->numFds = 0;
  native_handle_delete(native);
}

TEST_F(ThermalQueryTest, DebugReachesAServiceInAnotherProcess) {
  const int fd = memfd_create("dump", MFD_CLOEXEC);
  native_handle_t* const native = native_handle_create(/*numFds=*/1, /*numInts=*/0);
  native->data[0] = fd;
  EXPECT_TRUE(wrapper_->debug(hidl_handle(native), {}).isOk());
  char text[4096] = {};
  EXPECT_GT(pread(fd, text, sizeof text - 1, 0), 0);
  EXPECT_NE(std::string(text).find("skin"), std::string::npos);
  native_handle_close(native);
  native_handle_delete(native);
}

// A caller's mistake is reported, and then what needs the service is not survived.
TEST(ThermalWrapperDeathTest, WithoutAServiceEachOperationReportsAndGoesOn) {
  using aidl::android::hardware::thermal::ThermalHidlWrapper;
  constexpr char kMessage[] = "Thermal AIDL HAL client used by HIDL wrapper was not initialized";
  const auto wrapper = android::sp<ThermalHidlWrapper>::make(nullptr);
  const auto say = [](const auto& status, const auto&...) {
    fprintf(stderr, "told: %s.\n", status.debugMessage.c_str());
  };
  const auto callback = android::sp<HidlThermalCallback>::make();
  const auto type = V2_0::TemperatureType::SKIN;
  const std::string told = std::string("told: ") + kMessage + "\\.";
  EXPECT_DEATH(static_cast<void>(wrapper->getCurrentTemperatures(false, type, say).isOk()), told);
  EXPECT_DEATH(static_cast<void>(wrapper->getTemperatureThresholds(true, type, say).isOk()), told);
  EXPECT_DEATH(static_cast<void>(
                   wrapper->getCurrentCoolingDevices(false, V2_0::CoolingType::CPU, say).isOk()),
               told);
  EXPECT_DEATH(
      static_cast<void>(wrapper->registerThermalChangedCallback(callback, false, type, say).isOk()),
      told);

  // What ends before it needs the service.
  std::vector<std::string> heard;
  const auto hear = [&](const auto& status) { heard.push_back(status.debugMessage); };
  EXPECT_TRUE(wrapper->registerThermalChangedCallback(nullptr, false, type, hear).isOk());
  EXPECT_TRUE(wrapper->unregisterThermalChangedCallback(nullptr, hear).isOk());
  EXPECT_TRUE(wrapper->unregisterThermalChangedCallback(callback, hear).isOk());
  EXPECT_THAT(
      heard, ElementsAre(kMessage, "Invalid nullptr callback", kMessage, "Invalid nullptr callback",
                         kMessage, "The callback was not registered through wrapper before"));
}

}  // namespace
}  // namespace norvik::qel
