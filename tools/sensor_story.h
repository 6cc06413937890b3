// What the library's sensor family does for a client, in scenes.
#pragma once

#include "tools/device.h"
#include "tools/teller.h"

namespace norvik::qel::tool {

// On a closed phone with nothing near it, whose sensor service does not run yet. True when all went
// as told.
bool TellOfTheSensors(Teller& teller, SensorDriver& phone);

}  // namespace norvik::qel::tool
