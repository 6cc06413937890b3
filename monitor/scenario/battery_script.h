// What a phone's battery goes through.
#pragma once

#include "tools/device.h"
#include "tools/life.h"

namespace norvik::qel::tool {

class BatteryLife : public Life {
 public:
  explicit BatteryLife(BatteryDriver& driver);
  // Leaves the service running: without it the library's farewell would wait for it.
  ~BatteryLife() override;

 private:
  BatteryDriver& driver_;
};

}  // namespace norvik::qel::tool
