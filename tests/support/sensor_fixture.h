// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A simulated phone with a sensor hub, and a sensor handle. The test starts the hub's service.
#pragma once

#include "fixture.h"
#include "quorvel/simulated/sensor_hub.h"

namespace norvik::qel {

inline constexpr int kProximity = ASENSOR_TYPE_PROXIMITY;
inline constexpr int kHinge = ASENSOR_TYPE_HINGE_ANGLE;
inline constexpr int kProximityMinDelayUs = 20'000;
inline constexpr char kNoService[] =
    "InitSensorInterface: sensor service isn't ready, start to reconnect!";

class SensorFixture : public HandleFixture {
 protected:
  explicit SensorFixture(bool has_hinge = true) : HandleFixture(kSensors) {
    hub_.Add(kProximity, "proximity", kProximityMinDelayUs);
    if (has_hinge) hub_.Add(kHinge, "hinge angle");
    Init();
  }
  ~SensorFixture() override { Deinit(); }

  // Registers client 0 and takes its first call: 0, because the sensor has not reported yet.
  void RegisterProximity(int id = 0) {
    ASSERT_EQ(RegisterProximitySensorCallback(handle_, id, Client<0>, &seen_), 0);
    ASSERT_EQ(seen_.Take(), (Call{0, 0}));
  }
  // The same for client 1.
  void RegisterHinge(int id = 0) {
    ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, id, Client<1>, &seen_), 0);
    ASSERT_EQ(seen_.Take(), (Call{1, 0}));
  }
  fake::Script& look_ups() { return hub_.on(fake::BinderFunction::kCheckService); }
  int Calls(fake::SensorFunction function) { return hub_.on(function).calls(); }

  simulated::SensorHub hub_;
};

// The device has no hinge.
class HingelessFixture : public SensorFixture {
 protected:
  HingelessFixture() : SensorFixture(/*has_hinge=*/false) {}
};

}  // namespace norvik::qel
