// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The HIDL wrapper's queries, their records and their failures.
#include <cutils/native_handle.h>

#include <bit>
#include <cstdio>
#include <limits>

#include "thermal_wrapper_fixture.h"

// What `debug` hands to the service it leaves to it, deliberately; nothing else may leak.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "leak:ThermalHidlWrapper::debug\n";
}

namespace norvik::qel {
namespace {

using aidl::android::hardware::thermal::CoolingDevice;
using aidl::android::hardware::thermal::CoolingType;
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

using ThermalQueryTest = ThermalWrapperFixture;

TEST_F(ThermalQueryTest, TheQueriesOfHidl1AreRefusedWithoutACallToTheService) {
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

TEST_F(ThermalQueryTest, TemperaturesAreUnchangedExceptUnknownTypes) {
  const struct {
    int32_t aidl;
    int32_t hidl;
  } kTypes[] = {{INT32_MIN, -1}, {-2, -1}, {-1, -1}, {0, 0},   {3, 3},         {8, 8},
                {9, 9},          {10, -1}, {12, -1}, {19, -1}, {INT32_MAX, -1}};
  // Severities as they are, known or not; values bit for bit, a NaN of its own kind among them.
  const int32_t kSeverities[] = {0, 1, 6, 7, -1, INT32_MIN};
  const uint32_t kValues[] = {Bits(36.5F), Bits(-0.0F), 0x7fa12345, 0xffc00001, 0xff800000, 1};
  const auto name = [](size_t i) {
    return i == 0 ? "" : "sensor " + std::to_string(i) + " \xc2\xb0";
  };
  thermal_.Change([&](auto& data) {
    data.temperatures.clear();
    for (size_t i = 0; i < std::size(kTypes); ++i) {
      data.temperatures.push_back({.type = static_cast<TemperatureType>(kTypes[i].aidl),
                                   .name = name(i),
                                   .value = std::bit_cast<float>(kValues[i % std::size(kValues)]),
                                   .throttlingStatus = static_cast<ThrottlingSeverity>(
                                       kSeverities[i % std::size(kSeverities)])});
    }
  });
  const std::vector<V2_0::Temperature> reply = Temperatures();
  ASSERT_EQ(reply.size(), std::size(kTypes));
  for (size_t i = 0; i < reply.size(); ++i) {
    EXPECT_EQ(static_cast<int32_t>(reply[i].type), kTypes[i].hidl) << kTypes[i].aidl;
    EXPECT_EQ(reply[i].name, name(i));
    EXPECT_EQ(Bits(reply[i].value), kValues[i % std::size(kValues)]);
    EXPECT_EQ(static_cast<int32_t>(reply[i].throttlingStatus),
              kSeverities[i % std::size(kSeverities)]);
  }
}

TEST_F(ThermalQueryTest, ThresholdsAreCutOrFilledToSeven) {
  const std::vector<float> full = {1, 2, 3, 4, 5, 6, 7};
  const std::vector<float> cold = {-1, kNan, -3, -4, -5, -6, -7};
  const struct {
    TemperatureType type;
    V2_0::TemperatureType hidl_type;
    std::vector<float> hot, cold, hidl_hot, hidl_cold;
  } kRows[] = {
      {TemperatureType::SKIN, V2_0::TemperatureType::SKIN, full, cold, full, cold},
      {TemperatureType::TPU, V2_0::TemperatureType::UNKNOWN, {1, 2, 3}, {}, {1, 2, 3}, {}},
      {TemperatureType::NPU,
       V2_0::TemperatureType::NPU,
       {1, 2, 3, 4, 5, 6, 7, 8, 9},
       full,
       full,
       full},
  };
  thermal_.Change([&](auto& data) {
    data.thresholds.clear();
    for (const auto& row : kRows) {
      data.thresholds.push_back({.type = row.type,
                                 .name = "of a type",
                                 .hotThrottlingThresholds = row.hot,
                                 .coldThrottlingThresholds = row.cold});
    }
  });
  const std::vector<V2_0::TemperatureThreshold> reply = Thresholds();
  ASSERT_EQ(reply.size(), std::size(kRows));
  const auto expect = [](const auto& array, const std::vector<float>& values) {
    ASSERT_EQ(array.size(), 7u);
    for (size_t i = 0; i < 7; ++i) {
      EXPECT_EQ(Bits(array[i]), Bits(i < values.size() ? values[i] : kNan)) << i;
    }
  };
  for (size_t i = 0; i < reply.size(); ++i) {
    expect(reply[i].hotThrottlingThresholds, kRows[i].hidl_hot);
    expect(reply[i].coldThrottlingThresholds, kRows[i].hidl_cold);
    EXPECT_EQ(reply[i].type, kRows[i].hidl_type);
    EXPECT_EQ(reply[i].name, "of a type");
    EXPECT_EQ(Bits(reply[i].vrThrottlingThreshold), 0x7fc00000u);
  }
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

TEST_F(ThermalQueryTest, TheServiceFilters) {
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
  for (const ThermalOperation operation :
       {ThermalOperation::kGetTemperatures, ThermalOperation::kGetTemperatureThresholds,
        ThermalOperation::kGetCoolingDevices}) {
    thermal_.on(operation).Then(Outcome::Exception(EX_ILLEGAL_STATE, "not yet"));
  }
  ExpectAllFail(/*filter=*/false, "not yet");
  for (const ThermalOperation operation : {ThermalOperation::kGetTemperaturesWithType,
                                           ThermalOperation::kGetTemperatureThresholdsWithType,
                                           ThermalOperation::kGetCoolingDevicesWithType}) {
    thermal_.on(operation).Then(Outcome::ServiceSpecific(-7, "sensor bus"));
  }
  ExpectAllFail(/*filter=*/true, "sensor bus");
  thermal_.Kill(ThermalPath::kAidl);
  ExpectAllFail(/*filter=*/false, "");
}

// A service may have written half an answer when it fails, or give no status at all.
TEST_F(ThermalQueryTest, TheRecordsOfAFailedAnswerAreDropped) {
  const auto local = ndk::SharedRefBase::make<LocalThermal>();
  wrapper_ = android::sp<ThermalHidlWrapper>::make(local);
  EXPECT_EQ(Temperatures().size(), 2u);
  local->status = [] {
    return ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "half");
  };
  ExpectAllFail(/*filter=*/false, "half");
  local->status = [] { return ndk::ScopedAStatus(nullptr); };
  ExpectAllFail(/*filter=*/true, "");
}

TEST_F(ThermalQueryTest, DebugLeavesDescriptorAndOptionsToTheService) {
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
  // Without a descriptor, or without a handle, the service is not called.
  for (const int count : {0, -1}) {
    native->numFds = count;
    EXPECT_TRUE(wrapper_->debug(hidl_handle(native), {"a"}).isOk());
  }
  EXPECT_TRUE(wrapper_->debug(hidl_handle(), {"a"}).isOk());
  EXPECT_EQ(local->dumps, 2);
  native->numFds = 0;
  native_handle_delete(native);
}

// A caller's mistake is reported; an operation that needs the service then ends the process.
TEST(ThermalWrapperDeathTest, WithoutAServiceEachOperationReportsAndContinues) {
  using aidl::android::hardware::thermal::ThermalHidlWrapper;
  constexpr char kMessage[] = "Thermal AIDL HAL client used by HIDL wrapper was not initialized";
  const auto wrapper = android::sp<ThermalHidlWrapper>::make(nullptr);
  const auto print = [](const auto& status, const auto&...) {
    fprintf(stderr, "status: %s.\n", status.debugMessage.c_str());
  };
  const auto callback = android::sp<HidlThermalCallback>::make();
  const auto type = V2_0::TemperatureType::SKIN;
  const std::function<bool()> operations[] = {
      [&] { return wrapper->getCurrentTemperatures(false, type, print).isOk(); },
      [&] { return wrapper->getTemperatureThresholds(true, type, print).isOk(); },
      [&] {
        return wrapper->getCurrentCoolingDevices(false, V2_0::CoolingType::CPU, print).isOk();
      },
      [&] { return wrapper->registerThermalChangedCallback(callback, false, type, print).isOk(); }};
  for (const auto& operation : operations) {
    EXPECT_DEATH(operation(), std::string("status: ") + kMessage + "\\.");
  }

  // Calls that end before they need the service.
  std::vector<std::string> messages;
  const auto keep = [&](const auto& status) { messages.push_back(status.debugMessage); };
  EXPECT_TRUE(wrapper->registerThermalChangedCallback(nullptr, false, type, keep).isOk());
  EXPECT_TRUE(wrapper->unregisterThermalChangedCallback(nullptr, keep).isOk());
  EXPECT_TRUE(wrapper->unregisterThermalChangedCallback(callback, keep).isOk());
  EXPECT_THAT(messages, ElementsAre(kMessage, "Invalid nullptr callback", kMessage,
                                    "Invalid nullptr callback", kMessage,
                                    "The callback was not registered through wrapper before"));
}

}  // namespace
}  // namespace norvik::qel
