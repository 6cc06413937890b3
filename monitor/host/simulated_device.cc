// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/sensor.h>

#include <algorithm>
#include <utility>

#include "host/host.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel::monitor {

namespace {

using namespace std::chrono_literals;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using simulated::ThermalPath;

// The temperature with the name, which must exist.
simulated::Thermal::Temperature& Named(simulated::Thermal::ThermalData& data,
                                       std::string_view name) {
  const auto found =
      std::find_if(data.temperatures.begin(), data.temperatures.end(),
                   [&](const auto& temperature) { return temperature.name == name; });
  return data.temperatures.at(static_cast<size_t>(found - data.temperatures.begin()));
}

// A folding phone, initially closed and cool, with no object near it.
class SimulatedDevice : public Device {
 public:
  explicit SimulatedDevice(DeviceObserver observer)
      : health_(ToServiceObserver(observer)),
        sensors_(ToServiceObserver(observer)),
        thermal_(ToServiceObserver(std::move(observer))) {
    sensors_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    sensors_.Add(ASENSOR_TYPE_HINGE_ANGLE, "hinge angle");
    sensors_.Report(ASENSOR_TYPE_PROXIMITY, 5);
    sensors_.Report(ASENSOR_TYPE_HINGE_ANGLE, 0);
  }

  void Start(const DeviceSetup& setup) override {
    BecomeHostProcess(setup);
    StartHealth();
    sensors_.Start();
    thermal_.Start(ThermalPath::kAidl);
  }

  std::vector<DeviceStep> StepsOf(std::string_view service) override {
    if (service == kHealthService) return BatterySteps();
    return service == kSensorService ? SensorSteps() : ThermalSteps();
  }

  void EndSteps() override { StartHealth(); }

 private:
  // Level changes, both chargers, one more charge cycle, and a restart of the health service.
  std::vector<DeviceStep> BatterySteps() {
    return {
        {700ms, [&] { health_.SetLevel(49); }},
        {1000ms, [&] { health_.SetLevel(48); }},
        {1000ms, [&] { health_.SetWirelessOnline(true); }},
        {1000ms, [&] { health_.SetLevel(49); }},
        {1000ms, [&] { health_.SetLevel(50); }},
        {1000ms, [&] { health_.SetWirelessOnline(false); }},
        {1000ms, [&] { health_.SetDockOnline(true); }},
        {1000ms, [&, cycles = 10]() mutable { health_.SetCycleCount(++cycles); }},
        {1000ms, [&] { health_.SetLevel(51); }},
        {1000ms, [&] { health_.SetDockOnline(false); }},
        {1000ms, [&] { KillHealth(); }},
        {500ms, [&] { health_.SetLevel(50); }},  // not reported yet
        {500ms, [&] { StartHealth(); }},
        {2000ms, [] {}},  // time for the library to link again
    };
  }

  // A user opens the phone, takes a call and closes it. The sensor service never dies, because the
  // library does not survive its death.
  std::vector<DeviceStep> SensorSteps() {
    const auto open = [&](float degrees) {
      return [this, degrees] { sensors_.Report(ASENSOR_TYPE_HINGE_ANGLE, degrees); };
    };
    const auto approach = [&](float centimetres) {
      return [this, centimetres] { sensors_.Report(ASENSOR_TYPE_PROXIMITY, centimetres); };
    };
    return {
        {700ms, open(30)},  {300ms, open(60.5F)},  {300ms, open(90)},     {300ms, open(134.9F)},
        {300ms, open(180)}, {1000ms, approach(0)}, {1500ms, approach(5)}, {1000ms, open(90)},
        {300ms, open(0)},   {1000ms, [] {}},
    };
  }

  // A game heats the phone and strains its battery. The thermal service crashes before the phone
  // has cooled down, and restarts at once, because the library looks for it only briefly.
  std::vector<DeviceStep> ThermalSteps() {
    const auto heat = [&](const char* name, float celsius, ThrottlingSeverity severity) {
      return [this, name, celsius, severity] {
        thermal_.Change([&](simulated::Thermal::ThermalData& data) {
          simulated::Thermal::Temperature& temperature = Named(data, name);
          temperature.value = celsius;
          temperature.throttlingStatus = severity;
        });
      };
    };
    const auto strain = [&](ThrottlingSeverity severity) {
      return [this, severity] { thermal_.SetSeverity("AUDIO_current", severity); };
    };
    return {
        {700ms, heat("cpu", 86, ThrottlingSeverity::LIGHT)},
        {500ms, heat("skin", 36.5F, ThrottlingSeverity::LIGHT)},
        {500ms, heat("cpu", 91.5F, ThrottlingSeverity::MODERATE)},
        {500ms, heat("skin", 41.2F, ThrottlingSeverity::MODERATE)},
        {500ms, strain(ThrottlingSeverity::LIGHT)},
        {500ms, heat("skin", 45.8F, ThrottlingSeverity::SEVERE)},
        {1000ms,
         [&] {
           thermal_.Kill(ThermalPath::kAidl);
           thermal_.Start(ThermalPath::kAidl);
         }},
        {1000ms, heat("cpu", 60, ThrottlingSeverity::NONE)},
        {500ms, strain(ThrottlingSeverity::NONE)},
        {500ms, heat("skin", 40.1F, ThrottlingSeverity::MODERATE)},
        {500ms, heat("skin", 35.3F, ThrottlingSeverity::LIGHT)},
        {500ms, heat("skin", 30, ThrottlingSeverity::NONE)},
        {0ms, heat("cpu", 40, ThrottlingSeverity::NONE)},
        {1000ms, [] {}},
    };
  }

  void KillHealth() {
    running_ = false;
    health_.Kill();
  }

  void StartHealth() {
    if (!std::exchange(running_, true)) health_.Start();
  }

  simulated::Health health_;
  bool running_ = false;  // the health service
  simulated::SensorHub sensors_;
  simulated::Thermal thermal_;
};

}  // namespace

std::unique_ptr<Device> MakeSimulatedDevice(DeviceObserver observer) {
  return std::make_unique<SimulatedDevice>(std::move(observer));
}

}  // namespace norvik::qel::monitor
