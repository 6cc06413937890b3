#include "tools/sensor_properties.h"

namespace norvik::qel::tool {

constexpr SensorProperty kProximity = {{.key = "proximity", .name = "proximity", .unit = " cm"},
                                       RegisterProximitySensorCallback,
                                       DeregisterProximitySensorCallback};

constexpr SensorProperty kHingeAngle = {
    {.key = "hinge_angle", .name = "hinge angle", .unit = " degrees"},
    RegisterHingeAngleSensorCallback,
    DeregisterHingeAngleSensorCallback};

}  // namespace norvik::qel::tool
