// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The phone of the device tests on a host: it comes up before main() and goes after it. The
// environment says how, in QUORVEL_PHONE: "hidl" for the other thermal service; "absent", "late" or
// "refused" for a service, as in "late-battery". The signal SIGUSR1 restarts the health and thermal
// services with other values, SIGUSR2 changes values.
#include <android/log.h>
#include <android/sensor.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel {

namespace {

using fake::BinderFunction;
using services::HealthOperation;
using services::ThermalOperation;
using simulated::ThermalPath;

constexpr int kAlways = 1000;  // more calls than a test makes

class Phone {
 public:
  Phone() {
    __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
    const char* const how = std::getenv("QUORVEL_PHONE");
    how_ = how != nullptr ? how : "";
    path_ = how_ == "hidl" ? ThermalPath::kHidl : ThermalPath::kAidl;
    if (path_ == ThermalPath::kHidl) thermal_.Undeclare(ThermalPath::kAidl);
    thermal_.Declare(path_);
    sensors_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    sensors_.Add(ASENSOR_TYPE_HINGE_ANGLE, "hinge angle");
    sensors_.Report(ASENSOR_TYPE_PROXIMITY, 5);
    sensors_.Report(ASENSOR_TYPE_HINGE_ANGLE, 120);
    if (how_.starts_with("refused")) Refuse();
    if (Has("battery")) health_.Start();
    if (Has("sensor")) sensors_.Start();
    if (Has("thermal")) thermal_.Start(path_);

    sigset_t signals = {};
    sigaddset(&signals, SIGUSR1);
    sigaddset(&signals, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    commands_ = std::thread([this, signals] {
      int signal = 0;
      while (sigwait(&signals, &signal) == 0 && !is_ending_) {
        if (signal == SIGUSR1) {
          health_.Kill();
          thermal_.Kill(path_);
        }
        Change();
        if (signal == SIGUSR1) {
          health_.Start();
          thermal_.Start(path_);
        }
      }
    });
    late_ = std::thread([this] { StartLate(); });
  }
  ~Phone() {
    is_ending_ = true;
    kill(getpid(), SIGUSR2);
    commands_.join();
    late_.join();
    health_.Kill();
    thermal_.Kill(path_);
    static_cast<void>(fake::WaitUntilDelivered());
  }

 private:
  bool Has(const std::string& family) const {
    return how_ != "absent-" + family && how_ != "late-" + family;
  }

  void Change() {
    level_ = level_ == 61 ? 62 : 61;
    health_.SetLevel(level_);
    using Severity = simulated::Thermal::ThrottlingSeverity;
    thermal_.SetSeverity("skin", level_ == 62 ? Severity::LIGHT : Severity::NONE);
  }

  // As the access policy does for calls.
  void Refuse() {
    const fake::Outcome refused = {.status = STATUS_PERMISSION_DENIED};
    if (how_ == "refused-battery") {
      health_.on(HealthOperation::kRegisterCallback).Then(refused, kAlways);
      health_.on(HealthOperation::kGetHealthInfo).Then(refused, kAlways);
    } else if (how_ == "refused-sensor") {
      sensors_.on(fake::SensorFunction::kRegisterSensor).Then(refused, kAlways);
    } else {
      thermal_.on(ThermalOperation::kGetTemperatures).Then(refused, kAlways);
      thermal_.on(ThermalOperation::kGetTemperaturesWithType).Then(refused, kAlways);
    }
  }

  // When the library has looked for it in vain.
  void StartLate() {
    if (!how_.starts_with("late")) return;
    const auto function =
        how_ == "late-battery" ? BinderFunction::kGetService : BinderFunction::kCheckService;
    static_cast<void>(health_.on(function).WaitForCalls(1));
    if (how_ == "late-battery") health_.Start();
    if (how_ == "late-sensor") sensors_.Start();
    if (how_ == "late-thermal") thermal_.Start(path_);
  }

  const fake::ShortGetServiceWait short_wait_;
  std::string how_;
  ThermalPath path_ = ThermalPath::kAidl;
  int level_ = 61;
  std::atomic<bool> is_ending_ = false;
  simulated::Health health_;
  simulated::SensorHub sensors_;
  simulated::Thermal thermal_;
  std::thread commands_, late_;
};

// NOLINTNEXTLINE(cert-err58-cpp): without services there is nothing to test
Phone phone;

}  // namespace

}  // namespace norvik::qel
