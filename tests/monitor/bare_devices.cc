// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Devices that lack something, for tests of what the monitor says then.
#include <android/sensor.h>

#include <limits>
#include <string>
#include <utility>

#include "host/host.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel::monitor {

namespace {

using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;

// Beside the one that it has anyway; more than the library has room for in the usual case.
constexpr int kMoreLimits = 19;

class BareDevice : public Device {
 public:
  void Start(const DeviceSetup& setup) override { BecomeHostProcess(setup); }
};

// Its proximity sensor has nothing to report yet. Its thermal service is a HIDL one, with many
// limits of the battery's current and none of its voltage, and a thermistor out of order.
class FlatPhone : public Device {
 public:
  explicit FlatPhone(DeviceObserver observer)
      : health_(ToServiceObserver(observer)),
        sensors_(ToServiceObserver(observer)),
        thermal_(ToServiceObserver(std::move(observer))) {
    sensors_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    thermal_.Undeclare(simulated::ThermalPath::kAidl);
    thermal_.Declare(simulated::ThermalPath::kHidl);
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

  void Start(const DeviceSetup& setup) override {
    BecomeHostProcess(setup);
    health_.Start();
    sensors_.Start();
    thermal_.Start(simulated::ThermalPath::kHidl);
  }

 private:
  simulated::Health health_;
  simulated::SensorHub sensors_;
  simulated::Thermal thermal_;
};

}  // namespace

std::span<const DeviceType> DeviceTypes() {
  static constexpr DeviceType kTypes[] = {
      {.name = "bare",
       .description = "a phone without services",
       // NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is the seam's
       .make = [](DeviceObserver) -> std::unique_ptr<Device> {
         return std::make_unique<BareDevice>();
       }},
      {.name = "flat",
       .description = "an old phone that does not fold",
       .make = [](DeviceObserver observer) -> std::unique_ptr<Device> {
         return std::make_unique<FlatPhone>(std::move(observer));
       }},
  };
  return kTypes;
}

}  // namespace norvik::qel::monitor
