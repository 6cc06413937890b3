// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A simulated phone for a program that expects running services. It starts before main() and ends
// after it. The environment variable QUORVEL_PHONE selects its kind: "bare" has no services; "hidl"
// has the HIDL thermal service; "flat" is an old phone with the HIDL thermal service, without a
// hinge and some values; "absent-", "late-" or "refused-" with a family ("late-battery") concern
// one service. SIGUSR1 restarts the health and thermal services with other values; SIGUSR2 changes
// values.
#include <android/log.h>
#include <android/sensor.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <thread>

#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel {

namespace {

using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using fake::BinderFunction;
using services::HealthOperation;
using services::ThermalOperation;
using simulated::ThermalPath;

constexpr int kAlways = 1000;  // more calls than a test makes
// Limits in addition to the usual one; together more than GetBatteryChargeLimitCapacity().
constexpr int kMoreLimits = 19;

class Phone {
 public:
  explicit Phone(const std::string& how) {
    path_ = how == "hidl" || how == "flat" ? ThermalPath::kHidl : ThermalPath::kAidl;
    if (path_ == ThermalPath::kHidl) thermal_.Undeclare(ThermalPath::kAidl);
    thermal_.Declare(path_);
    thermal_.SetTemperature("skin", 38.5F);
    health_.SetDockOnline(true);
    Change();
    sensors_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    if (how == "flat") {
      WearOut();
    } else {
      sensors_.Add(ASENSOR_TYPE_HINGE_ANGLE, "hinge angle");
      sensors_.Report(ASENSOR_TYPE_PROXIMITY, 5);
      sensors_.Report(ASENSOR_TYPE_HINGE_ANGLE, 120);
    }
    Refuse(how);

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
    const auto start = [&](const std::string& family, BinderFunction look_up, auto start_service) {
      if (how == "late-" + family) {
        late_ = std::thread([this, look_up, start_service] {
          static_cast<void>(health_.on(look_up).WaitForCalls(1));  // which finds no service
          start_service();
        });
      } else if (how != "absent-" + family) {
        start_service();
      }
    };
    start("battery", BinderFunction::kGetService, [this] { health_.Start(); });
    start("sensor", BinderFunction::kCheckService, [this] { sensors_.Start(); });
    start("thermal", BinderFunction::kCheckService, [this] { thermal_.Start(path_); });
  }
  ~Phone() {
    is_ending_ = true;
    kill(getpid(), SIGUSR2);
    commands_.join();
    if (late_.joinable()) late_.join();
    health_.Kill();
    thermal_.Kill(path_);
    static_cast<void>(fake::WaitUntilDelivered());
  }

 private:
  void Change() {
    level_ = level_ == 61 ? 62 : 61;
    health_.SetLevel(level_);
    thermal_.SetSeverity("skin",
                         level_ == 61 ? ThrottlingSeverity::LIGHT : ThrottlingSeverity::NONE);
  }

  // Adds many battery current limits and a broken thermistor; removes the voltage limit.
  void WearOut() {
    thermal_.Change([](simulated::Thermal::ThermalData& data) {
      std::erase_if(data.temperatures, [](const auto& temperature) {
        return temperature.type == TemperatureType::BCL_VOLTAGE;
      });
      for (int i = 0; i < kMoreLimits; ++i) {
        data.temperatures.push_back({.type = TemperatureType::BCL_CURRENT,
                                     .name = "AUDIO_current_" + std::to_string(i),
                                     .throttlingStatus = ThrottlingSeverity::LIGHT});
      }
      data.temperatures.push_back({.type = TemperatureType::SKIN,
                                   .name = "back:left",
                                   .value = std::numeric_limits<float>::quiet_NaN()});
    });
  }

  // Refuses a family's calls, as the access policy does.
  void Refuse(const std::string& how) {
    const fake::Outcome refused = {.status = STATUS_PERMISSION_DENIED};
    if (how == "refused-battery") {
      health_.on(HealthOperation::kRegisterCallback).Then(refused, kAlways);
      health_.on(HealthOperation::kGetHealthInfo).Then(refused, kAlways);
    } else if (how == "refused-sensor") {
      sensors_.on(fake::SensorFunction::kRegisterSensor).Then(refused, kAlways);
    } else if (how == "refused-thermal") {
      thermal_.on(ThermalOperation::kGetTemperatures).Then(refused, kAlways);
      thermal_.on(ThermalOperation::kGetTemperaturesWithType).Then(refused, kAlways);
    }
  }

  const fake::ShortGetServiceWait short_wait_;
  ThermalPath path_ = ThermalPath::kAidl;
  int level_ = 0;
  std::atomic<bool> is_ending_ = false;
  simulated::Health health_;
  simulated::SensorHub sensors_;
  simulated::Thermal thermal_;
  std::thread commands_, late_;
};

std::unique_ptr<Phone> MakePhone() {
  __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
  const char* const environment = std::getenv("QUORVEL_PHONE");
  const std::string how = environment != nullptr ? environment : "";
  if (how == "bare") return nullptr;
  // The phone's threads inherit the mask: only the program itself receives these signals.
  sigset_t stops = {};
  sigaddset(&stops, SIGINT);
  sigaddset(&stops, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stops, nullptr);
  auto phone = std::make_unique<Phone>(how);
  pthread_sigmask(SIG_UNBLOCK, &stops, nullptr);
  return phone;
}

// NOLINTNEXTLINE(cert-err58-cpp): without services there is nothing to test
const std::unique_ptr<Phone> kPhone = MakePhone();

}  // namespace

}  // namespace norvik::qel
