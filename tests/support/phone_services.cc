// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The services of a phone, in a program that expects to find them running. They come up before
// main() and go after it.
#include <android/sensor.h>

#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"

namespace {

using norvik::qel::simulated::Health;
using norvik::qel::simulated::SensorHub;
using norvik::qel::simulated::Thermal;
using norvik::qel::simulated::ThermalPath;

struct Services {
  Services() {
    health.SetLevel(61);
    health.SetDockOnline(true);
    health.Start();
    sensors.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    sensors.Add(ASENSOR_TYPE_HINGE_ANGLE, "hinge angle");
    sensors.Report(ASENSOR_TYPE_PROXIMITY, 5);
    sensors.Report(ASENSOR_TYPE_HINGE_ANGLE, 120);
    sensors.Start();
    thermal.SetTemperature("skin", 38.5F);
    thermal.SetSeverity("skin", Thermal::ThrottlingSeverity::LIGHT);
    thermal.Start(ThermalPath::kAidl);
  }

  Health health;
  SensorHub sensors;
  Thermal thermal;
};

// NOLINTNEXTLINE(cert-err58-cpp): without services there is nothing to test
const Services kServices;

}  // namespace
