// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A simulated phone with a thermal service, and a thermal handle.
#pragma once

#include "fixture.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel {

using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using services::HidlThermalOperation;
using services::ThermalOperation;
using simulated::ThermalPath;

[[nodiscard]] inline int RegisterClient(void* handle, int id, const char* type, const char* name,
                                        ThermalCallbackFunc callback, void* cookie) {
  const ThermalCallbackParam param = {
      .id = id, .type_name = type, .temperature_name = name, .callback = callback};
  return RegisterThermalCallback(handle, &param, cookie);
}

// The number of "skin" temperatures that a query returns: 0 without a service.
[[nodiscard]] inline int QuerySkin(void* handle) {
  const char* name = "skin";
  thermistor out = {};
  int count = 1;
  EXPECT_EQ(GetBulkTemperatureByNames(handle, &name, 1, &out, &count), 0);
  return count;
}

// A handle and a simulated phone without a declared or running thermal service.
class ThermalFixture : public HandleFixture {
 protected:
  ThermalFixture() : HandleFixture(kThermal) {
    thermal_.Undeclare(ThermalPath::kAidl);
    Init();
  }
  ~ThermalFixture() override {
    Deinit();
    for (const ThermalPath path : {ThermalPath::kAidl, ThermalPath::kHidl}) thermal_.Kill(path);
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  void Bring(ThermalPath path) {
    thermal_.Declare(path);
    thermal_.Start(path);
  }
  // Registers client kClient, whose id is the same number.
  template <int kClient>
  [[nodiscard]] int Register(const char* type, const char* name) {
    return RegisterClient(handle_, kClient, type, name, Client<kClient>, &seen_);
  }
  // Registers the client and takes its first call, which has the current severity.
  template <int kClient>
  void RegisterAndTake(const char* type, const char* name, int severity = 0) {
    ASSERT_EQ(Register<kClient>(type, name), 0);
    ASSERT_EQ(seen_.Take(), (Call{kClient, severity}));
  }
  void RegisterSkin() { RegisterAndTake<1>("SKIN", "skin"); }
  void RegisterCpu() { RegisterAndTake<2>("CPU", "cpu"); }
  // Runs an operation that needs the service. Returns whether the service answered.
  [[nodiscard]] bool Operate() { return QuerySkin(handle_) == 1; }

  simulated::Thermal thermal_;
};

inline constexpr char kNotReady[] = "RestorePendingThermalCallback: thermal service isn't ready";
inline constexpr char kNotDeclared[] = "Thermal AIDL service is not declared";
inline constexpr char kNotRunning[] = "Unable to get Thermal AIDL service, this will be retried...";
inline constexpr char kRecovered[] = "GetThermalService: recover thermal service connection";

// The operations that a test can script on both services.
enum class ThermalCall { kQuery, kRegister, kUnregister };

// A ThermalFixture with a running service, AIDL or HIDL by the parameter.
class ThermalPathTest : public ThermalFixture, public testing::WithParamInterface<ThermalPath> {
 protected:
  ThermalPathTest() { Bring(GetParam()); }

  static bool is_aidl() { return GetParam() == ThermalPath::kAidl; }
  fake::Script& on(ThermalCall call) {
    constexpr std::pair<ThermalOperation, HidlThermalOperation> kOperations[] = {
        {ThermalOperation::kGetTemperaturesWithType, HidlThermalOperation::kGetCurrentTemperatures},
        {ThermalOperation::kRegisterThermalChangedCallbackWithType,
         HidlThermalOperation::kRegisterThermalChangedCallback},
        {ThermalOperation::kUnregisterThermalChangedCallback,
         HidlThermalOperation::kUnregisterThermalChangedCallback}};
    const auto& [aidl, hidl] = kOperations[static_cast<size_t>(call)];
    return is_aidl() ? thermal_.on(aidl) : thermal_.on(hidl);
  }
  size_t registered() const { return thermal_.callback_count(GetParam()); }
  [[nodiscard]] bool IsRegistered(size_t count) {
    return Eventually([=, this] { return registered() == count; });
  }
  fake::Script& look_up() {
    return thermal_.on(is_aidl() ? BinderFunction::kCheckService
                                 : BinderFunction::kTryGetHidlService);
  }
  void SetSkin(int severity) {
    thermal_.SetSeverity("skin", static_cast<ThrottlingSeverity>(severity));
  }
  // Restarts the service before the death notification is delivered.
  void Restart() {
    fake::HoldDeliveries notifications(fake::Delivery::kDeathNotification);
    thermal_.Start(GetParam());
  }
};

inline std::string PathName(const testing::TestParamInfo<ThermalPath>& info) {
  return info.param == ThermalPath::kAidl ? "Aidl" : "Hidl";
}
// For test suites derived from ThermalPathTest.
#define QUORVEL_TEST_BOTH_PATHS(suite)                                                       \
  INSTANTIATE_TEST_SUITE_P(, suite, testing::Values(ThermalPath::kAidl, ThermalPath::kHidl), \
                           PathName)

}  // namespace norvik::qel
