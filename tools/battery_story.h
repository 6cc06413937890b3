// What the library's battery family does for a client, in scenes.
#pragma once

#include "tools/device.h"
#include "tools/teller.h"

namespace norvik::qel::tool {

// True when all went as told.
bool TellOfTheBattery(Teller& teller, BatteryDriver& phone);

}  // namespace norvik::qel::tool
