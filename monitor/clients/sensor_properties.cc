// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/sensor_properties.h"

namespace norvik::qel::monitor {

constexpr SensorProperty kProximity = {{.key = "proximity", .name = "proximity", .unit = " cm"},
                                       RegisterProximitySensorCallback,
                                       DeregisterProximitySensorCallback};

constexpr SensorProperty kHingeAngle = {
    {.key = "hinge_angle", .name = "hinge angle", .unit = " degrees"},
    RegisterHingeAngleSensorCallback,
    DeregisterHingeAngleSensorCallback};

}  // namespace norvik::qel::monitor
