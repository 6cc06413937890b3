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

using aidl::android::hardware::thermal::ThrottlingSeverity;
using simulated::ThermalPath;

ThrottlingSeverity ToThrottling(Severity severity) {
  return static_cast<ThrottlingSeverity>(severity);  // they are numbered alike
}

// The temperature of that name, which has to be there.
simulated::Thermal::Temperature& Named(simulated::Thermal::ThermalData& data,
                                       std::string_view name) {
  const auto found =
      std::find_if(data.temperatures.begin(), data.temperatures.end(),
                   [&](const auto& temperature) { return temperature.name == name; });
  return data.temperatures.at(static_cast<size_t>(found - data.temperatures.begin()));
}

// A folding phone of today, closed and cool, with nothing near it.
class SimulatedDevice : public Device,
                        public BatteryDriver,
                        public SensorDriver,
                        public ThermalDriver {
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
    StartService();
    sensors_.Start();
    StartThermalService();
  }
  BatteryDriver* battery_driver() override { return this; }
  SensorDriver* sensor_driver() override { return this; }
  ThermalDriver* thermal_driver() override { return this; }

  void SetLevel(int percent) override { health_.SetLevel(percent); }
  void SetCycleCount(int cycles) override { health_.SetCycleCount(cycles); }
  void SetWirelessOnline(bool online) override { health_.SetWirelessOnline(online); }
  void SetDockOnline(bool online) override { health_.SetDockOnline(online); }

  void KillService() override {
    running_ = false;
    health_.Kill();
  }

  void StartService() override {
    if (std::exchange(running_, true)) return;
    health_.Start();
  }

  void SetProximity(float centimetres) override {
    sensors_.Report(ASENSOR_TYPE_PROXIMITY, centimetres);
  }

  void SetHingeAngle(float degrees) override { sensors_.Report(ASENSOR_TYPE_HINGE_ANGLE, degrees); }

  void SetTemperature(std::string_view name, float celsius, Severity severity) override {
    thermal_.Change([&](simulated::Thermal::ThermalData& data) {
      simulated::Thermal::Temperature& temperature = Named(data, name);
      temperature.value = celsius;
      temperature.throttlingStatus = ToThrottling(severity);
    });
  }

  void SetSeverity(std::string_view name, Severity severity) override {
    thermal_.SetSeverity(std::string(name), ToThrottling(severity));
  }

  void KillThermalService() override { thermal_.Kill(ThermalPath::kAidl); }
  void StartThermalService() override { thermal_.Start(ThermalPath::kAidl); }

 private:
  simulated::Health health_;
  bool running_ = false;
  simulated::SensorHub sensors_;
  simulated::Thermal thermal_;
};

}  // namespace

std::unique_ptr<Device> MakeSimulatedDevice(DeviceObserver observer) {
  return std::make_unique<SimulatedDevice>(std::move(observer));
}

}  // namespace norvik::qel::monitor
