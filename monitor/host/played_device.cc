// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <aidl/android/hardware/thermal/TemperatureType.h>
#include <android/sensor.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "host/host.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel::monitor {

namespace {

using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using simulated::ThermalPath;
using Temperature = simulated::Thermal::Temperature;

constexpr int kUnknown = -1;

// A recording may have types that this platform version does not know.
TemperatureType TypeNamed(std::string_view name) {
  for (const TemperatureType type : ndk::enum_range<TemperatureType>()) {
    if (toString(type) == name) return type;
  }
  return TemperatureType::UNKNOWN;
}

float ToFloat(std::optional<float> value) {
  return value.value_or(std::numeric_limits<float>::quiet_NaN());
}

Temperature ToTemperature(const TemperatureReport& report) {
  return {.type = TypeNamed(report.type),
          .name = report.name,
          .value = ToFloat(report.value),
          .throttlingStatus = static_cast<ThrottlingSeverity>(report.severity)};
}

int32_t TypeOf(Sensor sensor) {
  return sensor == Sensor::kProximity ? ASENSOR_TYPE_PROXIMITY : ASENSOR_TYPE_HINGE_ANGLE;
}

auto Find(std::vector<Temperature>& temperatures, TemperatureType type, const std::string& name) {
  return std::find_if(temperatures.begin(), temperatures.end(), [&](const auto& temperature) {
    return temperature.type == type && temperature.name == name;
  });
}

// The operations in their order.
template <typename Operation>
std::vector<std::string_view> Names(std::string_view (*name)(Operation)) {
  std::vector<std::string_view> names(static_cast<size_t>(Operation::kCount));
  std::generate(names.begin(), names.end(),
                [&, i = 0]() mutable { return name(static_cast<Operation>(i++)); });
  return names;
}

// The operation with the name; nullopt if there is none.
template <typename Operation>
std::optional<Operation> Named(std::string_view call, std::string_view (*name)(Operation)) {
  const auto names = Names(name);
  const auto found = std::find(names.begin(), names.end(), call);
  if (found == names.end()) return std::nullopt;
  return static_cast<Operation>(found - names.begin());
}

class SimulatedPlayer : public PlayedDevice {
 public:
  SimulatedPlayer(const Equipment& equipment, DeviceObserver observer)
      : observer_(ToServiceObserver(std::move(observer))),
        health_(observer_),
        sensors_(observer_),
        thermal_(observer_) {
    health_.Change([](simulated::Health::HealthInfo& info) {
      info.batteryLevel = kUnknown;
      info.batteryCycleCount = kUnknown;
    });
    for (const Sensor sensor : equipment.sensors) {
      sensors_.Add(TypeOf(sensor), sensor == Sensor::kProximity ? "proximity" : "hinge angle");
    }
    thermal_.Change([&](simulated::Thermal::ThermalData& data) {
      data = {};
      for (const TemperatureReport& report : equipment.temperatures) {
        data.temperatures.push_back(ToTemperature(report));
      }
    });
    // Otherwise clients would wait for a service that never starts.
    const auto has = [&](std::string_view service) {
      return equipment.services.contains(std::string(service));
    };
    if (!has(kHealthService)) health_.Undeclare();
    if (!has(kThermalService)) thermal_.Undeclare(ThermalPath::kAidl);
    if (has(kHidlThermalService)) thermal_.Declare(ThermalPath::kHidl);
  }

  void Start(const DeviceSetup& setup) override { BecomeHostProcess(setup); }

  void Play(const DeviceEvent& event) override {
    switch (event.kind) {
      case DeviceEvent::Kind::kServiceStarted:
        StartService(event.service);
        break;
      case DeviceEvent::Kind::kServiceDied:
        KillService(event.service);
        break;
      case DeviceEvent::Kind::kNotice:
        observer_({.kind = services::ServiceEvent::Kind::kNotice,
                   .service = event.service,
                   .detail = event.detail});
        break;
      case DeviceEvent::Kind::kReported:
        std::visit([&](const auto& report) { Make(report); }, event.report);
        break;
      default:
        break;  // events that the library's own calls cause
    }
  }

  std::vector<std::string_view> CallsOf(std::string_view service) override {
    if (service == kHealthService) return Names(services::HealthOperationName);
    if (service == kThermalService) return Names(services::ThermalOperationName);
    if (service == kHidlThermalService) return Names(services::HidlThermalOperationName);
    return {};
  }

  void Refuse(const Refusal& refusal) override {
    fake::Script* const script = ScriptOf(refusal.service, refusal.call);
    if (script == nullptr) return;
    for (int i = 0; i < refusal.times; ++i) {
      script->Then(fake::Outcome::Exception(EX_ILLEGAL_STATE, refusal.reason));
    }
  }

 private:
  // Null if the service has no such call. Calls of the sensor service cannot be scripted.
  fake::Script* ScriptOf(std::string_view service, std::string_view call) {
    if (service == kHealthService) {
      const auto operation = Named(call, services::HealthOperationName);
      return operation ? &health_.on(*operation) : nullptr;
    }
    if (service == kThermalService) {
      const auto operation = Named(call, services::ThermalOperationName);
      return operation ? &thermal_.on(*operation) : nullptr;
    }
    if (service != kHidlThermalService) return nullptr;
    const auto operation = Named(call, services::HidlThermalOperationName);
    return operation ? &thermal_.on(*operation) : nullptr;
  }

  void StartService(std::string_view service) {
    if (service == kHealthService) health_.Start();
    if (service == kSensorService) sensors_.Start();
    if (service == kThermalService) thermal_.Start(ThermalPath::kAidl);
    if (service == kHidlThermalService) thermal_.Start(ThermalPath::kHidl);
  }

  void KillService(std::string_view service) {
    if (service == kHealthService) health_.Kill();
    if (service == kThermalService) thermal_.Kill(ThermalPath::kAidl);
    if (service == kHidlThermalService) thermal_.Kill(ThermalPath::kHidl);
  }

  void Make(std::monostate /*nothing*/) {}

  void Make(const BatteryReport& report) {
    health_.Change([&](simulated::Health::HealthInfo& info) {
      info.batteryLevel = report.level.value_or(kUnknown);
      info.batteryCycleCount = report.cycle_count.value_or(kUnknown);
      info.chargerWirelessOnline = report.wireless_online;
      info.chargerDockOnline = report.dock_online;
    });
  }

  void Make(const SensorReport& report) {
    const int32_t type = TypeOf(report.sensor);
    if (report.values.empty()) {
      sensors_.Forget(type);
      return;
    }
    std::vector<services::SensorReading> delivery;
    for (const auto value : report.values)
      delivery.push_back({.type = type, .value = ToFloat(value)});
    sensors_.Report(delivery);
  }

  // A report without a change is a notification of the same state.
  void Make(const TemperatureReport& report) {
    const Temperature temperature = ToTemperature(report);
    bool changed = true;
    thermal_.Change([&](simulated::Thermal::ThermalData& data) {
      const auto mine = Find(data.temperatures, temperature.type, temperature.name);
      if (mine == data.temperatures.end()) {
        data.temperatures.push_back(temperature);
      } else {
        changed = std::exchange(*mine, temperature) != temperature;
      }
    });
    if (!changed) thermal_.Notify(temperature);
  }

  void Make(const TemperatureGone& gone) {
    thermal_.Change([&](simulated::Thermal::ThermalData& data) {
      const auto mine = Find(data.temperatures, TypeNamed(gone.type), gone.name);
      if (mine != data.temperatures.end()) data.temperatures.erase(mine);
    });
  }

  const services::ServiceObserver observer_;
  simulated::Health health_;
  simulated::SensorHub sensors_;
  simulated::Thermal thermal_;
};

}  // namespace

std::unique_ptr<PlayedDevice> MakePlayedDevice(const Equipment& equipment,
                                               DeviceObserver observer) {
  return std::make_unique<SimulatedPlayer>(equipment, std::move(observer));
}

}  // namespace norvik::qel::monitor
