// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A simulated phone with a thermal service, a thermal handle, and clients that remember.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "clients.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/gate.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/simulated/thermal.h"
#include "waiting.h"

namespace norvik::qel {

using aidl::android::hardware::thermal::ThrottlingSeverity;
using simulated::ThermalPath;

// What a test may do to the queries with a type, the registrations and the unregistrations of a
// service.
enum class ThermalCall { kQuery, kRegister, kUnregister };

inline fake::Script& ScriptOf(simulated::Thermal& thermal, ThermalPath path, ThermalCall call) {
  using services::HidlThermalOperation;
  using services::ThermalOperation;
  const bool aidl = path == ThermalPath::kAidl;
  switch (call) {
    case ThermalCall::kQuery:
      return aidl ? thermal.on(ThermalOperation::kGetTemperaturesWithType)
                  : thermal.on(HidlThermalOperation::kGetCurrentTemperatures);
    case ThermalCall::kRegister:
      return aidl ? thermal.on(ThermalOperation::kRegisterThermalChangedCallbackWithType)
                  : thermal.on(HidlThermalOperation::kRegisterThermalChangedCallback);
    case ThermalCall::kUnregister:
      break;
  }
  return aidl ? thermal.on(ThermalOperation::kUnregisterThermalChangedCallback)
              : thermal.on(HidlThermalOperation::kUnregisterThermalChangedCallback);
}

[[nodiscard]] inline int RegisterClient(void* handle, int id, const char* type, const char* name,
                                        ThermalCallbackFunc callback, void* cookie) {
  const ThermalCallbackParam param = {
      .id = id, .type_name = type, .temperature_name = name, .callback = callback};
  return RegisterThermalCallback(handle, &param, cookie);
}

// A client that keeps the worker of its type until the gate opens.
struct Stall {
  fake::Gate gate = {};
  static void Callback(int /*severity*/, void* cookie) { static_cast<Stall*>(cookie)->gate.Pass(); }
};

// No service is declared or runs at first.
class ThermalFixture : public testing::Test {
 protected:
  ThermalFixture() {
    thermal_.Undeclare(ThermalPath::kAidl);
    InitThermalInfo(&handle_);
  }
  ~ThermalFixture() override {
    DeinitThermalInfo(&handle_);
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
  // And takes its first call, which brings the severity of the moment.
  template <int kClient>
  void RegisterAndHear(const char* type, const char* name, int severity = 0) {
    ASSERT_EQ(Register<kClient>(type, name), 0);
    ASSERT_EQ(seen_.Take(), (Call{kClient, severity}));
  }
  // Takes calls until one brings something else than NONE.
  [[nodiscard]] std::optional<Call> TakeThrottled() {
    std::optional<Call> call = seen_.Take();
    while (call && call->value == 0) call = seen_.Take();
    return call;
  }
  // Any operation that needs the service and changes nothing; whether the service answered.
  [[nodiscard]] bool Operate() {
    const char* name = "skin";
    thermistor out = {};
    int count = 1;
    EXPECT_EQ(GetBulkTemperatureByNames(handle_, &name, 1, &out, &count), 0);
    return count == 1;
  }
  std::string Dump() const { return TextOf(DumpThermalInfo, handle_); }
  // The texts that the family has logged with this priority or a higher one.
  std::vector<std::string> Log(int priority = ANDROID_LOG_DEBUG) const {
    std::vector<std::string> texts;
    for (const auto& line : log_.Lines()) {
      if (line.tag.starts_with("audio_hw_thermal") && line.priority >= priority) {
        texts.push_back(line.text);
      }
    }
    return texts;
  }

  fake::LogCapture log_;
  Seen<Call> seen_;
  simulated::Thermal thermal_;
  void* handle_ = nullptr;
};

inline constexpr char kNotReady[] = "RestorePendingThermalCallback: thermal service isn't ready";
inline constexpr char kNotDeclared[] = "Thermal AIDL service is not declared";
inline constexpr char kNotRunning[] = "Unable to get Thermal AIDL service, this will be retried...";
inline constexpr char kRecovered[] = "GetThermalService: recover thermal service connection";

// The same over either service, which runs from the beginning.
class ThermalPathTest : public ThermalFixture, public testing::WithParamInterface<ThermalPath> {
 protected:
  ThermalPathTest() { Bring(GetParam()); }

  fake::Script& on(ThermalCall call) { return ScriptOf(thermal_, GetParam(), call); }
  size_t registered() const { return thermal_.callback_count(GetParam()); }
  [[nodiscard]] bool IsRegistered(size_t count) {
    return Eventually([=, this] { return registered() == count; });
  }
  fake::Script& look_up() {
    return thermal_.on(GetParam() == ThermalPath::kAidl ? fake::BinderFunction::kCheckService
                                                        : fake::BinderFunction::kTryGetHidlService);
  }
  // A restart that is over before the death notification arrives.
  void Restart() {
    fake::HoldDeliveries notifications(fake::Delivery::kDeathNotification);
    thermal_.Start(GetParam());
  }
};

inline std::string PathName(const testing::TestParamInfo<ThermalPath>& info) {
  return info.param == ThermalPath::kAidl ? "Aidl" : "Hidl";
}

}  // namespace norvik::qel
