#include "tools/families.h"

#include "tools/commands.h"
#include "tools/event.h"

namespace norvik::qel::tool {

std::span<const Family> Families() {
  static constexpr Family kFamilies[] = {
      {.name = "battery", .service = kHealthService, .watch = WatchBattery, .get = GetBattery},
      {.name = "sensors", .service = kSensorService, .watch = WatchSensors, .get = GetSensors},
  };
  return kFamilies;
}

}  // namespace norvik::qel::tool
