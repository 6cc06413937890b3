// What the library's thermal family does for a client, in scenes.
#pragma once

#include "tools/device.h"
#include "tools/teller.h"

namespace norvik::qel::tool {

// On a cool phone whose thermal service does not run yet. True when all went as told.
bool TellOfTheHeat(Teller& teller, ThermalDriver& phone);

}  // namespace norvik::qel::tool
