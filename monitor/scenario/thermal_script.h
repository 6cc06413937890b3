// What a phone's temperatures go through.
#pragma once

#include "tools/device.h"
#include "tools/life.h"

namespace norvik::qel::tool {

class ThermalLife : public Life {
 public:
  explicit ThermalLife(ThermalDriver& driver);
};

}  // namespace norvik::qel::tool
