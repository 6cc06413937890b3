// What a folding phone's sensors go through.
#pragma once

#include "tools/device.h"
#include "tools/life.h"

namespace norvik::qel::tool {

class SensorLife : public Life {
 public:
  explicit SensorLife(SensorDriver& driver);
};

}  // namespace norvik::qel::tool
