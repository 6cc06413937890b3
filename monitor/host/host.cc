// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "host/host.h"

#include <android/binder_process.h>
#include <android/log.h>
#include <android/sensor.h>
#include <limits.h>

#include <cmath>
#include <optional>
#include <utility>

#include "quorvel/fake/log_capture.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;

// In the order of services::ServiceEvent::Kind.
constexpr Kind kKinds[] = {Kind::kServiceStarted,
                           Kind::kServiceDied,
                           Kind::kCallbackRegistered,
                           Kind::kCallbackUnregistered,
                           Kind::kCallRefused,
                           Kind::kNotice,
                           Kind::kReported};

std::optional<int> IfIn(int number, int lowest, int highest) {
  return number >= lowest && number <= highest ? std::optional(number) : std::nullopt;
}

std::optional<float> IfFinite(float number) {
  return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

Report ToReport(std::monostate /*nothing*/) {
  return {};
}

Report ToReport(const aidl::android::hardware::health::HealthInfo& info) {
  return BatteryReport{.level = IfIn(info.batteryLevel, 0, 100),
                       .cycle_count = IfIn(info.batteryCycleCount, 0, INT_MAX),
                       .wireless_online = info.chargerWirelessOnline,
                       .dock_online = info.chargerDockOnline};
}

// The report is empty for a sensor that the library does not use.
Report ToReport(const services::SensorReport& report) {
  const auto of = [&](Sensor sensor) {
    SensorReport result = {.sensor = sensor, .values = {}};
    for (const float value : report.values) result.values.push_back(IfFinite(value));
    return result;
  };
  if (report.type == ASENSOR_TYPE_PROXIMITY) return of(Sensor::kProximity);
  if (report.type == ASENSOR_TYPE_HINGE_ANGLE) return of(Sensor::kHingeAngle);
  return {};
}

Report ToReport(const aidl::android::hardware::thermal::Temperature& temperature) {
  return TemperatureReport{.type = toString(temperature.type),
                           .name = temperature.name,
                           .value = IfFinite(temperature.value),
                           .severity = static_cast<Severity>(temperature.throttlingStatus)};
}

Report ToReport(const services::TemperatureGone& gone) {
  return TemperatureGone{.type = toString(gone.type), .name = gone.name};
}

Report ToReport(const services::Report& report) {
  return std::visit([](const auto& what) { return ToReport(what); }, report);
}

}  // namespace

void BecomeHostProcess(const DeviceSetup& setup) {
  if (setup.verbose) {
    __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
  }
  // The output already shows what the library's warnings are about.
  fake::SetDefaultLogPriority(ANDROID_LOG_ERROR);
  ABinderProcess_startThreadPool();
}

services::ServiceObserver ToServiceObserver(DeviceObserver observer) {
  return [observer = std::move(observer)](const services::ServiceEvent& event) {
    observer({.kind = kKinds[static_cast<size_t>(event.kind)],
              .service = event.service,
              .detail = event.detail,
              .report = ToReport(event.report)});
  };
}

}  // namespace norvik::qel::monitor
