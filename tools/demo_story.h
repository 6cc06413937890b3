// The library's story, told on a device that can be told what to do.
#pragma once

#include "tools/device.h"
#include "tools/session.h"

namespace norvik::qel::tool {

// Checks itself: every value that it announces has to arrive. Returns the exit code. The sensor and
// the thermal service are to be late.
int TellStory(Session& session, BatteryDriver& battery, SensorDriver& sensors,
              ThermalDriver& thermal);

}  // namespace norvik::qel::tool
